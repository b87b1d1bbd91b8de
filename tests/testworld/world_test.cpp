// The world's sessions driven line by line, with no transport.

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "testworld/world.h"

namespace {

using namespace testworld;

const std::string iac_dont_echo("\xff\xfe\x01", 3);
const std::string iac_do_echo("\xff\xfd\x01", 3);

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// A session with the bytes other players send it.
struct player {
    player(world* game, int id) : link(game, id, [this](const std::string& bytes) { delivered += bytes; }) {}
    // The banner and name prompt.
    std::string begin() {
        link.start();
        return link.take_output();
    }
    std::string line(const std::string& text) {
        link.handle_line(text);
        return link.take_output();
    }
    std::string log_in(const std::string& name) {
        begin();
        line(name);
        return line("secret");
    }
    std::string delivered;
    session link;
};

// Time passes round by round until the fight ends (at most 8 rounds); what the rounds sent.
std::string fight_to_the_end(player& p, game_clock::time_point* now) {
    std::string rounds;
    for (int round = 0; round < 8 && p.link.fighting(); ++round) {
        *now += session::round_interval;
        p.link.tick(*now);
        rounds += p.link.take_output();
    }
    return rounds;
}

TEST(TestworldSession, NamesAreTwoToFifteenLetters) {
    world game;
    const struct {
        const char* typed;
        const char* name;  // null: refused
    } rows[] = {
        {"", nullptr},           {"a", nullptr},        {"abc1", nullptr},       {"sixteenletterszz", nullptr},
        {"bo b", nullptr},       {"bob;", nullptr},     {"\xff\xfe", nullptr},   {"  bOB \r", "Bob"},
        {"al", "Al"},            {"fifteenletterss", "Fifteenletterss"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        player p(&game, 1);
        p.begin();
        const std::string reply = p.line(row.typed);
        if (row.name) {
            EXPECT_EQ(reply, "\r\nPassword: " + iac_dont_echo);
            EXPECT_EQ(p.link.player_name(), row.name);
        } else {
            EXPECT_TRUE(contains(reply, "Names are 2 to 15 letters"));
            EXPECT_FALSE(contains(reply, "Password"));
        }
    }
}

TEST(TestworldSession, BannerPasswordModeThenLogin) {
    world game;
    player p(&game, 1);
    const std::string banner = p.begin();
    EXPECT_TRUE(contains(banner, "\x1b[1m\x1b[33mEmber Vale\x1b[0m"));
    EXPECT_EQ(banner.substr(banner.size() - 28), "By what name are you known? ");
    EXPECT_EQ(p.line("_lantern 0f1e-uuid 1.2.3"), "") << "the client's identification is not a name";
    EXPECT_EQ(p.link.client_identification(), "_lantern 0f1e-uuid 1.2.3");
    p.line("Anna");
    EXPECT_EQ(p.line("  "), "A password, please.\r\nPassword: ") << "password mode stays on";
    const std::string reply = p.line("hunter2");
    EXPECT_EQ(reply.substr(0, 3), iac_do_echo);
    EXPECT_TRUE(contains(reply, ";sareaname;Ember Vale;eareaname;"));
    EXPECT_TRUE(contains(reply, ";sdirs;on H`;edirs;")) << "all eight exits: 255";
    EXPECT_TRUE(contains(reply, ";smap;@")) << "the map round the start, without a slide";
    EXPECT_TRUE(contains(reply, "Village Square"));
    EXPECT_TRUE(contains(reply, ";swindow_create;Inventory\nWhat you carry\n40 10\ninventory\n\n;ewindow_create;"));
    EXPECT_TRUE(contains(reply, ";swindow_create;Score\nYour score\n50 8\nscore\nnowrap noscroll\n;ewindow_create;"));
    EXPECT_TRUE(contains(reply, ";swindow_create;Spells\nYour spells\n30 12\nspells\nmenuonly\n;ewindow_create;"));
    EXPECT_TRUE(contains(reply, ";swindow_create;Log\nYour log\n50 12\n\nnoscroll\n;ewindow_create;"));
    EXPECT_LT(reply.find(";slogin;Anna;elogin;"), reply.find(";swindow_create;"))
        << "windows belong to the logged-in player";
    EXPECT_EQ(game.player_names(), std::vector<std::string>{"Anna"});
}

TEST(TestworldSession, WalkingTheGrid) {
    world game;
    player p(&game, 1);
    p.log_in("Anna");
    // Each move: the room, its exits, the map with the move's direction byte (and the level
    // change's trailer), the zone; a wall answers "walkfail" with the direction number.
    const struct {
        const char* command;
        const char* room_or_message;
        const char* tags;
    } walk[] = {
        {"n", "North Road", ";sdirs;on D];edirs;;sareaname;Ember Vale;eareaname;;smap;A"},
        {"north", "You cannot go that way.", ";swalkfail;0;ewalkfail;"},
        {"E", "Orchard", ";sdirs;on DQ;edirs;"},
        {"ne", "You cannot go that way.", ";swalkfail;4;ewalkfail;"},
        {"southwest", "Village Square", ";smap;G"},
        {"se", "Chapel Garden", ";sdirs;on GB;edirs;"},
        {"north", "Market Row", ";sdirs;on HR;edirs;"},
        {"sw", "South Gate", ";sdirs;on GH;edirs;"},
        {"w", "Mill Pond", ";sdirs;on AH;edirs;"},
        {"l", "Exits: north, east, northeast.", ";smap;@"},
        {"up", "You cannot go that way.", "> "},
        {"nw", "You cannot go that way.", ";swalkfail;7;ewalkfail;"},
        {"n", "Smithy", ";smap;A"},
        {"n", "Old Watchtower", ";sdirs;on I];edirs;"},
        {"u", "Watchtower Top", ";sdirs;on QA;edirs;;sareaname;Watchtower Heights;eareaname;;smap;@"},
        {"d", "Old Watchtower", ";sareaname;Ember Vale;eareaname;;smap;@"},
    };
    for (const auto& row : walk) {
        SCOPED_TRACE(row.command);
        const std::string reply = p.line(row.command);
        EXPECT_TRUE(contains(reply, row.room_or_message));
        EXPECT_TRUE(contains(reply, row.tags));
    }
    // Steps sound; leaving the square for the smithy, a building, passes a door.
    EXPECT_FALSE(contains(p.line("l"), ";ssound;"));
    EXPECT_FALSE(contains(p.line("w"), ";ssound;")) << "no way west: no step";
    EXPECT_TRUE(contains(p.line("e"), ";ssound;move/step;esound;"));
    p.line("n");
    const std::string door = p.line("w");
    EXPECT_TRUE(contains(door, ";ssound;move/step;esound;;ssound;move/door;esound;")) << door;
    EXPECT_EQ(exits_code(0), "AA");
    EXPECT_EQ(exits_code(1023), "``") << "31 above 'A' in both letters";
}

TEST(TestworldSession, LevelChangesCarryTheirTrailers) {
    world game;
    player p(&game, 1);
    p.log_in("Anna");
    p.line("nw");
    const std::string up = p.line("up");
    const std::string down = p.line("down");
    // The trailer is the last byte of the map block.
    EXPECT_TRUE(contains(up, "\nA;emap;"));
    EXPECT_TRUE(contains(down, "\nB;emap;"));
    EXPECT_FALSE(contains(p.line("look"), "\nA;emap;"));
}

TEST(TestworldSession, PlayersSayWhoQuitAndLeave) {
    world game;
    auto anna = std::make_unique<player>(&game, 1);
    player bert(&game, 2), cara(&game, 3);
    anna->log_in("Anna");
    bert.log_in("Bert");
    cara.log_in("Cara");
    cara.line("n");
    bert.delivered.clear();
    cara.delivered.clear();
    // Said text reaches the room only, escaped and cleaned.
    EXPECT_TRUE(contains(anna->line(std::string("say hi;there\xff\x1b", 14)), "You say '\x1b[36mhi;;there??\x1b[0m'"));
    EXPECT_TRUE(contains(bert.delivered, "Anna says '\x1b[36mhi;;there??\x1b[0m'"));
    EXPECT_EQ(cara.delivered, "");
    EXPECT_TRUE(contains(anna->line("'quick"), "You say '\x1b[36mquick\x1b[0m'"));
    EXPECT_TRUE(contains(anna->line("say"), "Say what?"));
    EXPECT_TRUE(contains(anna->line("look"), "Also here: Bert."));

    EXPECT_TRUE(contains(bert.line("who"), "  Anna\r\n  Bert\r\n  Cara\r\n3 players.\r\n"));
    const std::string bye = bert.line("quit");
    EXPECT_LT(bye.find(";sevent;logoff;eevent;"), bye.find("Goodbye."));
    EXPECT_TRUE(bert.link.finished());
    EXPECT_TRUE(contains(anna->delivered, "Bert leaves the world."));
    EXPECT_EQ(game.player_names(), (std::vector<std::string>{"Anna", "Cara"}));
    anna.reset();  // a connection that ends without quit
    EXPECT_EQ(game.player_names(), std::vector<std::string>{"Cara"});
}

TEST(TestworldSession, ClientLinesAreAnsweredAtEveryStage) {
    world game;
    player p(&game, 1);
    p.begin();
    for (const char* next_stage : {"Anna", "secret", "look"}) {
        SCOPED_TRACE(next_stage);
        EXPECT_EQ(p.line("lnping"), ";sevent;lnpong;eevent;");
        EXPECT_EQ(p.line("lnlstatus 10111110110101110110  1  2  0"), "");
        EXPECT_EQ(p.line("lnlwindow close map"), "");
        p.line(next_stage);
    }
    EXPECT_EQ(p.line("lnping "), "\r\nHuh? Type 'help' for the commands.\r\n;shp;142 150 87 120 110 110;ehp;\r\n> ")
        << "only the exact line is a ping";
}

// What the client-feature commands put on the wire: the tags, and the text around them.
TEST(TestworldSession, ClientFeatureCommands) {
    world game;
    player p(&game, 1);
    p.log_in("Anna");
    const struct {
        const char* command;
        const char* wire;  // the start of the reply
    } rows[] = {
        {"i",
         ";sdivert;Inventory;edivert;\x1b[1m\x1b[37mYou are carrying:\x1b[0m\r\n  a brass lantern (lit)\r\n"
         "  a loaf of bread\r\n  \x1b[33m12 gold coins\x1b[0m\r\n;tundivert;You look through your pack.\r\n"},
        {"note buy rope; and oil",
         ";sappend;Log;eappend;buy rope;; and oil\r\n;tunappend;You write it down in your log.\r\n"},
        {"note", "Write what?\r\n"},
        {"popup a;b", ";sdivert;a,b;edivert;This text was written for the window a;;b.\r\n;tundivert;"},
        {"popup", "Which window?\r\n"},
        {"flash", ";sevent;colorflash 000000 B00000 4 000000 30;eevent;Lightning splits the sky!\r\n"},
        {"FLASH ff0000 000000 x", ";sevent;colorflash ff0000 000000 x;eevent;"},
        {"config", ";sconfig;automap flash;econfig;"},
        {"config hint_buttons disable", ";sconfig;hint_buttons disable;econfig;"},
        {"spells", ";sdivert;Spells;edivert;\x1b[1m\x1b[37mSpells you know:\x1b[0m\r\n  light\r\n"},
        {"gossip hi; all",
         ";schdiv;gossip;echdiv;[gossip] \x1b[1m\x1b[36mAnna\x1b[0m: hi;; all\r\n;tchudiv;"
         ";schdiv;gossip;echdiv;[gossip] \x1b[1m\x1b[36mWren\x1b[0m: Well met, Anna.\r\n;tchudiv;"
         ";schdiv;ooc;echdiv;[ooc] \x1b[1m\x1b[36mWren\x1b[0m: (the bot is listening on both channels)\r\n;tchudiv;"},
        {"ooc", "Say what on ooc?\r\n"},
        {"quit -check", "\x1b[1m\x1b[31mWarning:\x1b[0m you are about to leave the game. Type 'quit' to go.\r\n"},
        {"version", "Ember Vale test world, version 0.3.\r\n"},
        {"help me", "More commands: recall brings you back to the square"},
        {"recall", "You pray, and the world folds you back to the village square.\r\n"},
        {"popups 2",
         ";swindow_create;Window 1\nNumbered window 1\n20 4\n\n\n;ewindow_create;"
         ";swindow_create;Window 2\nNumbered window 2\n20 4\n\n\n;ewindow_create;2 windows defined.\r\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        const std::string reply = p.line(row.command);
        EXPECT_EQ(reply.rfind(std::string("\r\n") + row.wire, 0), 0u) << reply;  // an answer starts its own line
        EXPECT_EQ(reply.substr(reply.size() - 4), "\r\n> ");
    }
    EXPECT_TRUE(contains(p.line("help"), "inventory (i)"));
    // Opening a window fills it at once; closing it, or opening one the world doesn't know, is quiet.
    const std::string opened = p.line("lnlwindow open Score");
    EXPECT_EQ(opened.rfind(";sdivert;Score;edivert;", 0), 0u) << opened;
    EXPECT_EQ(p.line("lnlwindow close Score"), "");
    EXPECT_EQ(p.line("lnlwindow open Log"), "");
    EXPECT_FALSE(p.link.finished()) << "quit -check only warns";
    EXPECT_TRUE(contains(p.line("quit -f"), ";sevent;logoff;eevent;Goodbye.\r\n"));
    EXPECT_TRUE(p.link.finished());
}

TEST(TestworldSession, RandomBytesNeverBreakASession) {
    world game;
    player p(&game, 1);
    std::mt19937 random(20240917);
    p.begin();
    for (int i = 0; i < 2000; i++) {
        std::string line(random() % 40, '\0');
        for (char& c : line) c = static_cast<char>(random() % 256);
        if (i == 10) line = "Anna";
        if (i == 11) line = "secret";
        p.line(line);
    }
    if (p.link.finished()) return;  // the bytes happened to spell "quit"
    EXPECT_EQ(p.line("lnping"), ";sevent;lnpong;eevent;");
    EXPECT_TRUE(contains(p.line("look"), "Exits:"));
}

// The status tags: numbers with every prompt, icons, experience, the sky and the game clock.
TEST(TestworldSession, StatusTagsAndTheGameClock) {
    world game;
    player p(&game, 1);
    const std::string login = p.log_in("Anna");
    EXPECT_TRUE(contains(login, ";sicons;10000;eicons;"));
    EXPECT_TRUE(contains(login, ";sxpp;300;expp;"));
    EXPECT_TRUE(contains(login, ";sskystate;110 1 60")) << "the square's sky, about ten in the morning";
    EXPECT_TRUE(contains(login, ";shp;142 150 87 120 110 110;ehp;\r\n> "));

    // Walking costs a point of movement and brings the new room's sky.
    std::string reply = p.line("w");
    EXPECT_TRUE(contains(reply, "Smithy"));
    EXPECT_TRUE(contains(reply, ";sskystate;000 1 "));
    EXPECT_TRUE(contains(reply, ";shp;142 150 87 120 109 110;ehp;"));
    EXPECT_TRUE(contains(p.line("n"), ";sskystate;010 4 "));

    // The clock: set, refused, and an hour later on its own.
    reply = p.line("time 720");
    EXPECT_TRUE(contains(reply, ";sskystate;010 4 720 12:00 pm;eskystate;"));
    EXPECT_TRUE(contains(reply, "The time is now 12:00 pm."));
    EXPECT_TRUE(contains(p.line("time 1440"), "runs from minute 0 to 1439"));
    EXPECT_TRUE(contains(p.line("time x"), "runs from minute 0 to 1439"));
    const game_clock::time_point now = game_clock::now();
    p.link.tick(now + std::chrono::seconds(30));
    EXPECT_EQ(p.link.take_output(), "") << "still the same hour";
    p.link.tick(now + std::chrono::seconds(61));
    EXPECT_EQ(p.link.take_output(), ";sskystate;010 4 781 1:01 pm;eskystate;");
    EXPECT_EQ(p.link.minute_at(now + std::chrono::seconds(1440 + 61)), 781);

    // Conditions as icons: icon 0 while nothing is wielded, icon 1 while asleep.
    const struct {
        const char* command;
        const char* icons;  // null: no icons tag
    } rows[] = {{"wield", "00000"}, {"wield", nullptr}, {"sleep", "01000"}, {"sleep", nullptr},
                {"wake", "00000"},  {"remove", "10000"}, {"remove", nullptr}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        reply = p.line(row.command);
        if (row.icons)
            EXPECT_TRUE(contains(reply, std::string(";sicons;") + row.icons + ";eicons;")) << reply;
        else
            EXPECT_FALSE(contains(reply, ";sicons;")) << reply;
    }

    const struct {
        int minute;
        const char* text;
    } times[] = {{0, "12:00 am"}, {59, "12:59 am"}, {720, "12:00 pm"}, {780, "1:00 pm"}, {1439, "11:59 pm"}};
    for (const auto& t : times) EXPECT_EQ(clock_text(t.minute), t.text);
}

TEST(TestworldSession, TheTrainingDummyFightsUntilItFalls) {
    world game;
    player p(&game, 1);
    p.log_in("Anna");
    std::string reply = p.line("kill dummy");
    EXPECT_TRUE(contains(reply, ";tcombat;;senemyhp;100 the training dummy;eenemyhp;")) << reply;
    EXPECT_TRUE(contains(p.line("kill"), "already fighting"));
    game_clock::time_point now = game_clock::now();
    const std::string rounds = fight_to_the_end(p, &now);
    EXPECT_FALSE(p.link.fighting());
    for (const char* step : {"80", "60", "40", "20"})
        EXPECT_TRUE(contains(rounds, std::string(";senemyhp;") + step + " the training dummy;eenemyhp;")) << step;
    EXPECT_TRUE(contains(rounds, ";tncombat;;sxpp;450 120;expp;"));
    size_t blows = 0;
    for (size_t at = rounds.find(";ssound;combat/blow;esound;"); at != std::string::npos;
         at = rounds.find(";ssound;combat/blow;esound;", at + 1))
        blows++;
    EXPECT_EQ(blows, 4u);
    EXPECT_TRUE(contains(rounds, ";ssound;combat/dummy_falls;esound;;tncombat;"));
    EXPECT_TRUE(contains(rounds, ";shp;132 150 "));
    EXPECT_TRUE(contains(rounds, "The training dummy falls apart!"));
    now += std::chrono::seconds(5);
    p.link.tick(now);
    EXPECT_FALSE(contains(p.link.take_output(), "enemyhp"));
}

TEST(TestworldSession, HintButtonsFollowTheRoomAndSleepSwitchesTheDirections) {
    world game;
    player p(&game, 1);
    const std::string login = p.log_in("Anna");
    EXPECT_TRUE(contains(login, ";sb1;Look\nlook;eb1;;sb2;Exits\nexits;eb2;"));
    EXPECT_FALSE(contains(login, ";sb5;"));
    // Into the Smithy, a shop: the column is cleared first, then the shop's hints follow the others.
    const std::string shop = p.line("west");
    EXPECT_TRUE(contains(shop, ";tbclear;;sdirs;on A`;edirs;")) << shop;
    EXPECT_TRUE(contains(shop, ";sb1;Look\nlook;eb1;;sb2;Exits\nexits;eb2;;sb5;Wares\nlist;eb5;;sb6;Buy a lamp\nbuy lamp;eb6;"))
        << shop;
    EXPECT_TRUE(contains(p.line("list"), "brass lamp"));
    EXPECT_TRUE(contains(p.line("buy lamp"), "You buy a brass lamp."));
    EXPECT_TRUE(contains(p.line("exits"), "Obvious exits: north, east, south, northeast, southeast."));
    const std::string out = p.line("e");
    EXPECT_TRUE(contains(out, ";tbclear;"));
    EXPECT_FALSE(contains(out, ";sb5;"));
    EXPECT_TRUE(contains(p.line("buy lamp"), "There is no shop here."));
    // Asleep the buttons are off, with the exits still told.
    EXPECT_TRUE(contains(p.line("sleep"), ";sdirs;off H`;edirs;"));
    EXPECT_TRUE(contains(p.line("look"), ";sdirs;off H`;edirs;"));
    EXPECT_TRUE(contains(p.line("wake"), ";sdirs;on H`;edirs;"));
    // The diagonal buttons' words are taken as the diagonals.
    EXPECT_TRUE(contains(p.line("nwest"), "Old Watchtower"));
}

TEST(TestworldSession, AliasesBindFunctionKeys) {
    world game;
    player p(&game, 1);
    p.log_in("Anna");
    EXPECT_TRUE(contains(p.line("alias f03 look"), ";sbf3;look;ebf3;"));
    EXPECT_TRUE(contains(p.line("f03"), "Village Square"));
    EXPECT_TRUE(contains(p.line("f04"), "Alias f04 is not defined."));
    EXPECT_TRUE(contains(p.line("alias f12 say hi; there"), ";sbf12;say hi, there;ebf12;")) << "no semicolon in tag data";
    EXPECT_TRUE(contains(p.line("alias f01 f01"), ";sbf1;f01;ebf1;"));
    EXPECT_TRUE(contains(p.line("f01"), "Huh?")) << "an alias runs no alias";
    EXPECT_TRUE(contains(p.line("alias f03"), ";sbf3;;ebf3;"));
    for (const char* bad : {"alias", "alias f13 look", "alias f1 look", "alias g01 look", "alias f0x look"})
        EXPECT_TRUE(contains(p.line(bad), "Aliases are f01 to f12")) << bad;
}

TEST(TestworldSession, FollowersJoinTheGroupAndFight) {
    world game;
    player p(&game, 1);
    p.log_in("Anna");
    EXPECT_TRUE(contains(p.line("recruit"), ";sgroup;142 150 87 120 110 110 Anna\n90 90 30 60 80 80 . Ana\n;egroup;"));
    p.line("recruit");
    const std::string third = p.line("recruit");
    EXPECT_TRUE(contains(third, "130 130 0 0 100 100 . Borin\n30 30 0 0 60 60 - Pip\n;egroup;")) << third;
    EXPECT_TRUE(contains(p.line("recruit"), "Nobody else wants to join you."));
    p.line("kill");
    game_clock::time_point now = game_clock::now();
    const std::string rounds = fight_to_the_end(p, &now);
    // Five rounds, each with a block: the followers lose 3, 5 and 2 points a round.
    size_t blocks = 0;
    for (size_t at = rounds.find(";sgroup;"); at != std::string::npos; at = rounds.find(";sgroup;", at + 1)) blocks++;
    EXPECT_EQ(blocks, 5u);
    EXPECT_TRUE(contains(rounds, ";sgroup;132 150 87 120 110 110 Anna\n75 90 30 60 80 80 . Ana\n105 130 0 0 100 100 . "
                                 "Borin\n20 30 0 0 60 60 - Pip\n;egroup;"))
        << rounds;
    EXPECT_TRUE(contains(p.line("dismiss"), ";sgroup;;egroup;"));
    EXPECT_TRUE(contains(p.line("dismiss"), "You have no followers."));
}

}  // namespace
