#include "panels/channel_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> names(const zorn_channel_list& list) {
    std::vector<std::string> out;
    for (const auto& r : list.records()) out.push_back(r->name);
    return out;
}

}  // namespace

TEST(ChannelList, FirstDivertMakesAllFirstAndCurrent) {
    zorn_channel_list list;
    std::vector<zorn_channel_record*> made;
    zorn_channel_record* gossip = list.set_divert_channel("gossip", &made);
    ASSERT_NE(gossip, nullptr);
    EXPECT_EQ(names(list), (std::vector<std::string>{"(all)", "gossip"}));
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(made[0], list.all_channel);
    EXPECT_EQ(list.current_channel, list.all_channel);
    EXPECT_EQ(list.all_channel->selected, 1);
    EXPECT_EQ(list.divert_channel, gossip);

    // Names sort with strcmp: capitals before small letters, "(all)" before both.
    made.clear();
    list.set_divert_channel("Ooc", &made);
    list.set_divert_channel("auction", &made);
    list.set_divert_channel("gossip", &made);
    EXPECT_EQ(made.size(), 2u) << "an existing channel is not made again";
    EXPECT_EQ(names(list), (std::vector<std::string>{"(all)", "Ooc", "auction", "gossip"}));
}

TEST(ChannelList, TextLightsHiddenTabsAndAClickPutsTheLightOut) {
    zorn_channel_list list;
    zorn_channel_record* gossip = list.set_divert_channel("gossip");
    std::vector<zorn_channel_record*> lit;
    ASSERT_TRUE(list.text_arrived(&lit));
    // "(all)" is shown, so only the channel lights.
    EXPECT_EQ(lit, std::vector<zorn_channel_record*>{gossip});
    EXPECT_EQ(list.all_channel->has_new_text, 0);
    lit.clear();
    list.text_arrived(&lit);
    EXPECT_TRUE(lit.empty()) << "a lit tab is not lit again";

    list.select(gossip);
    EXPECT_EQ(list.current_channel, gossip);
    EXPECT_EQ(gossip->has_new_text, 0);
    EXPECT_EQ(gossip->selected, 1);
    EXPECT_EQ(list.all_channel->selected, 0);
    list.text_arrived(&lit);
    EXPECT_EQ(lit, std::vector<zorn_channel_record*>{list.all_channel});
}

TEST(ChannelList, DivertEndsAndTextWithoutAChannelIsLost) {
    zorn_channel_list list;
    EXPECT_FALSE(list.clear_divert_channel()) << "chudiv alone";
    EXPECT_FALSE(list.text_arrived());
    list.set_divert_channel("gossip");
    EXPECT_TRUE(list.clear_divert_channel());
    EXPECT_FALSE(list.text_arrived());
    list.set_divert_channel("ooc");
    list.clear_all();  // //cclear during a diversion
    EXPECT_EQ(list.divert_channel, nullptr);
    EXPECT_FALSE(list.text_arrived());
    EXPECT_TRUE(list.records().empty());
}

TEST(ChannelList, PagesKeepTheirOwnTabsAndCurrentChannel) {
    zorn_channel_list list;
    zorn_channel_record* gossip = list.set_divert_channel("gossip");
    zorn_channel_record* ooc = list.set_divert_channel("ooc");
    list.select(gossip);

    // A tab moved away: the next one on this page becomes current.
    list.move_to_other_page(gossip);
    list.settle();
    EXPECT_EQ(list.current_channel, list.all_channel);
    EXPECT_EQ(list.tabs_on_page(), 2);

    list.flip_page();
    EXPECT_EQ(list.page, 1);
    EXPECT_EQ(list.current_channel, gossip) << "the only tab of page 1";
    EXPECT_EQ(list.other_page_channel, list.all_channel);
    // Made while page 1 is shown: it stands on page 1.
    zorn_channel_record* trade = list.set_divert_channel("trade");
    EXPECT_EQ(trade->page, 1);
    EXPECT_EQ(list.tabs_on_page(), 2);

    list.flip_page();
    EXPECT_EQ(list.current_channel, list.all_channel) << "page 0 gets back its current channel";
    list.move_to_other_page(list.all_channel);
    list.move_to_other_page(ooc);
    list.settle();
    EXPECT_EQ(list.tabs_on_page(), 0);
    EXPECT_EQ(list.current_channel, list.all_channel) << "an empty page keeps what it had; the window shows the placeholder";
}

TEST(ChannelList, NamesAreCutAt39Characters) {
    zorn_channel_list list;
    const std::string long_name(45, 'x');
    zorn_channel_record* record = list.set_divert_channel(long_name.c_str());
    EXPECT_EQ(std::string(record->name), long_name.substr(0, 39));
    EXPECT_EQ(list.find(long_name.c_str()), record) << "found again by the same long name";
    EXPECT_EQ(list.create(nullptr), nullptr);
}
