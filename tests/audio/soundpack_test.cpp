// The soundpack against sound files made at test time: where a name is looked for, what each kind
// of bad file does, the decode limit, the fades, and the cap on simultaneous playouts.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

#include "audio/mixer.h"
#include "audio/ogg_decode.h"
#include "audio/soundpack.h"
#include "tests/audio/sound_fixtures.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace {

size_t count_of(const std::string& text, const std::string& part) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) found++;
    return found;
}

std::vector<int16_t> samples_of(const sound_data* record) {
    std::vector<int16_t> values;
    for (long i = 0; i + 1 < record->length; i += 2)
        values.push_back(static_cast<int16_t>(record->samples[i] | (record->samples[i + 1] << 8)));
    return values;
}

class Soundpack : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        home = new temp_dir;
        const std::string pack = *home / "soundpack";
        struct fixture {
            const char* file;
            int rate, channels;
            const char* seconds;
        } const fixtures[] = {
            {"ding", 44100, 1, "0.2"},        {"chime", 44100, 2, "0.2"},         {"low", 22050, 1, "0.2"},
            {"tiny", 44100, 1, "0.001"},      {"ten_stereo", 44100, 2, "10.0"},   {"long_stereo", 44100, 2, "10.1"},
            {"twenty_mono", 44100, 1, "20"},  {"weather/rain", 44100, 1, "0.1"},  {"custom/rain", 44100, 2, "0.1"},
            {"a/b/c", 44100, 1, "0.1"},       {"custom/b/c", 44100, 2, "0.1"},    {"bell", 44100, 1, "0.1"},
            {"custom/bell", 22050, 2, "0.1"}, {"five", 44100, 5, "0.1"},
        };
        for (const fixture& f : fixtures)
            ASSERT_TRUE(sound_fixture::make_ogg(pack + "/" + f.file + ".ogg", f.rate, f.channels, f.seconds))
                << "sox and oggenc are needed: " << f.file;
        write_file(pack + "/junk.ogg", "this is no sound file\n");
        const std::string whole = read_file(pack + "/chime.ogg");
        write_file(pack + "/cut.ogg", whole.substr(0, whole.size() / 2));
    }
    static void TearDownTestSuite() {
        delete home;
        home = nullptr;
    }
    void SetUp() override { pack = std::make_unique<zorn_soundpack>(home->path().c_str()); }
    void TearDown() override {
        audio_enabled = 0;
        reap_audio_objects();
        pack.reset();
    }
    static std::string file(const std::string& name) { return *home / ("soundpack/" + name + ".ogg"); }

    static temp_dir* home;
    std::unique_ptr<zorn_soundpack> pack;
};
temp_dir* Soundpack::home = nullptr;

TEST_F(Soundpack, LoadsMonoAndStereoWithFiveMillisecondFades) {
    log_capture log(3);
    const struct {
        const char* name;
        int channels;
    } cases[] = {{"ding", 1}, {"chime", 2}};
    for (const auto& c : cases) {
        sound_data* record = pack->get_sound_data(c.name);
        ASSERT_NE(record, nullptr) << c.name;
        EXPECT_EQ(record->state, sound_state_loaded);
        EXPECT_EQ(record->channels, c.channels);
        EXPECT_EQ(std::string(record->name), std::string("soundpack/") + c.name + ".ogg");
        const std::vector<int16_t> reference = sound_fixture::reference_samples(file(c.name));
        ASSERT_EQ(reference.size(), 8820u * c.channels);  // sample-exact length
        EXPECT_EQ(samples_of(record), sound_fixture::faded(reference, 44100, c.channels));
        EXPECT_NE(samples_of(record), reference);
    }
    EXPECT_EQ(pack->get_sound_data("ding"), pack->get_sound_data("ding"));  // decoded once
    EXPECT_EQ(count_of(log.text(), "zorn_soundpack::get_sound_data() - loaded sound 'ding'.\n"), 1u);
    EXPECT_EQ(pack->record_count(), 2);
}

TEST_F(Soundpack, OneMillisecondGetsNoFades) {
    sound_data* record = pack->get_sound_data("tiny");
    ASSERT_NE(record, nullptr);
    const std::vector<int16_t> reference = sound_fixture::reference_samples(file("tiny"));
    ASSERT_EQ(reference.size(), 44u);
    EXPECT_EQ(samples_of(record), reference);
}

TEST_F(Soundpack, WrongRateIsDecodedOnceAndStaysSilent) {
    log_capture log(2);
    audio_enabled = 1;
    pack->parse_audio_tag("low");
    pack->parse_audio_tag("low");
    EXPECT_EQ(audio_active_count(), 0);
    EXPECT_EQ(count_of(log.text(), "Error in zorn_soundpack::load_from_file() - file '" + file("low") +
                                       "' had unusable sample rate 22050.\n"),
              1u);
    EXPECT_EQ(count_of(log.text(), "zorn_soundpack::parse_audio_tag - no sound available for 'low'\n"), 2u);
}

TEST_F(Soundpack, TenSecondsOfStereoIsTheLimit) {
    log_capture log(2);
    sound_data* ten = pack->get_sound_data("ten_stereo");
    ASSERT_NE(ten, nullptr);
    EXPECT_EQ(ten->length, 1764000);
    sound_data* twenty = pack->get_sound_data("twenty_mono");
    ASSERT_NE(twenty, nullptr);
    EXPECT_EQ(twenty->length, 1764000);
    EXPECT_EQ(pack->get_sound_data("long_stereo"), nullptr);
    EXPECT_EQ(pack->find_or_create("soundpack/long_stereo.ogg")->state, sound_state_failed);
    EXPECT_NE(log.text().find("Warning in zorn_ogg_decode_from_file_to_memory() - file is too large for constraint, "
                              "estimated size 1781640.\n"),
              std::string::npos)
        << log.text();
    EXPECT_NE(log.text().find("Error in zorn_soundpack::load_from_file() - file '" + file("long_stereo") +
                              "' exceeds available decode space.\n"),
              std::string::npos);
}

TEST_F(Soundpack, CustomFolderTakesTheBaseNameAndABrokenOneFallsBack) {
    log_capture log(3);
    sound_data* rain = pack->get_sound_data("weather/rain");  // custom/rain.ogg, stereo
    ASSERT_NE(rain, nullptr);
    EXPECT_EQ(rain->state, sound_state_loaded_custom);
    EXPECT_EQ(rain->channels, 2);
    EXPECT_NE(log.text().find("zorn_soundpack::get_sound_data() - got custom sound 'weather/rain'.\n"), std::string::npos);

    sound_data* deep = pack->get_sound_data("a/b/c");  // what follows the first '/': custom/b/c.ogg
    ASSERT_NE(deep, nullptr);
    EXPECT_EQ(deep->state, sound_state_loaded_custom);
    EXPECT_EQ(deep->channels, 2);

    sound_data* bell = pack->get_sound_data("bell");  // the custom file has a bad rate
    ASSERT_NE(bell, nullptr);
    EXPECT_EQ(bell->state, sound_state_loaded);
    EXPECT_EQ(bell->channels, 1);
    EXPECT_NE(log.text().find("had unusable sample rate 22050"), std::string::npos);

    sound_data* ding = pack->get_sound_data("ding");  // no custom file: the normal one
    ASSERT_NE(ding, nullptr);
    EXPECT_EQ(ding->state, sound_state_loaded);
    EXPECT_NE(log.text().find("zorn_soundpack::get_sound_data() - unable to open custom soundpack file "
                              "'soundpack/ding.ogg'.  Falling back to normal locations.\n"),
              std::string::npos);
}

TEST_F(Soundpack, AMissingSoundIsLookedForAgainUntilItArrives) {
    log_capture log(3);
    EXPECT_EQ(pack->get_sound_data("later"), nullptr);
    EXPECT_EQ(pack->find_or_create("soundpack/later.ogg")->state, sound_state_not_loaded);
    EXPECT_NE(log.text().find("zorn_soundpack::get_sound_data() - file 'soundpack/later.ogg' not found.\n"),
              std::string::npos);
    ASSERT_TRUE(sound_fixture::make_ogg(file("later"), 44100, 1, "0.05"));
    EXPECT_NE(pack->get_sound_data("later"), nullptr);
    std::remove(file("later").c_str());
}

TEST_F(Soundpack, BadFilesFailForTheRun) {
    log_capture log(2);
    EXPECT_EQ(pack->get_sound_data("junk"), nullptr);
    EXPECT_EQ(pack->get_sound_data("junk"), nullptr);
    EXPECT_EQ(count_of(log.text(), "Warning in zorn_ogg_decode_from_file_to_memory() - not an Ogg bitstream?\n"), 1u);
    EXPECT_EQ(count_of(log.text(), "Error in zorn_soundpack::load_from_file() - bad file format for '" + file("junk") +
                                       "'.\n"),
              1u);
    EXPECT_EQ(pack->get_sound_data("five"), nullptr);
    EXPECT_NE(log.text().find("' had unusable channel count 5.\n"), std::string::npos);

    // A file cut in the middle: either it fails, or what decodes is a prefix of the whole.
    sound_data* cut = pack->get_sound_data("cut");
    if (cut) {
        EXPECT_LT(cut->length, 8820 * 4);
        EXPECT_EQ(cut->channels, 2);
    } else {
        EXPECT_EQ(pack->find_or_create("soundpack/cut.ogg")->state, sound_state_failed);
    }
}

TEST_F(Soundpack, AFourthOverlappingPlayoutIsRefused) {
    audio_enabled = 1;
    {
        log_capture quiet(2);
        for (int i = 0; i < 4; i++) pack->parse_audio_tag("ding");
        EXPECT_EQ(audio_active_count(), 3);
        EXPECT_EQ(quiet.text().find("too many"), std::string::npos);
    }
    log_capture log(3);
    pack->parse_audio_tag("ding");
    EXPECT_EQ(log.text(), "zorn_soundpack::parse_audio_tag() - too many simultaneous playouts of 'soundpack/ding.ogg'\n");
    sound_data* ding = pack->find_or_create("soundpack/ding.ogg");
    EXPECT_EQ(ding->playout_count, 3);
    pack->parse_audio_tag("chime");  // another sound isn't held back
    EXPECT_EQ(audio_active_count(), 4);

    // Once they have played, the next tag plays again.
    int16_t left, right;
    for (int i = 0; i < 8821; i++) mix_sample_frame(&left, &right);
    EXPECT_EQ(audio_active_count(), 0);
    pack->parse_audio_tag("ding");
    EXPECT_EQ(ding->playout_count, 1);
    EXPECT_EQ(audio_active_count(), 1);
}

TEST_F(Soundpack, TheTagNamesItsFirstWordOnly) {
    audio_enabled = 1;
    const struct {
        const char* payload;
        const char* record;
    } cases[] = {
        {"ding extra words", "soundpack/ding.ogg"},
        {"chime\tx", "soundpack/chime.ogg"},
        {"weather/rain\nnext line", "soundpack/weather/rain.ogg"},
    };
    for (const auto& c : cases) {
        pack->parse_audio_tag(c.payload);
        EXPECT_EQ(pack->find_or_create(c.record)->playout_count, 1) << c.payload;
    }
    EXPECT_EQ(pack->record_count(), 3);

    log_capture log(1);
    pack->parse_audio_tag("");
    pack->parse_audio_tag(nullptr);
    pack->parse_audio_tag("nothing here");
    EXPECT_EQ(log.text(),
              "zorn_soundpack::parse_audio_tag - no sound available for ''\n"
              "zorn_soundpack::parse_audio_tag - no sound available for ''\n"
              "zorn_soundpack::parse_audio_tag - no sound available for 'nothing here'\n");
    EXPECT_EQ(pack->find_or_create("soundpack/.ogg")->state, sound_state_not_loaded);

    // A name longer than a record's key is cut, and stays one record.
    const std::string long_name(3000, 'x');
    pack->parse_audio_tag(long_name.c_str());
    pack->parse_audio_tag(long_name.c_str());
    EXPECT_EQ(pack->record_count(), 6);
    EXPECT_EQ(std::string(pack->find_or_create(("soundpack/" + long_name).c_str())->name).size(), 999u);
}

TEST(OggDecode, CodesBeforeDecoding) {
    log_capture log(1);
    zorn_decoded_sound decoded;
    EXPECT_EQ(zorn_ogg_decode_from_file_to_memory("/nonexistent/x.ogg", 1023, &decoded), ogg_decode_too_large);
    EXPECT_EQ(zorn_ogg_decode_from_file_to_memory("/nonexistent/x.ogg", 1024, &decoded), ogg_decode_cannot_open);
    EXPECT_EQ(decoded.samples, nullptr);
    EXPECT_EQ(log.text(),
              "zorn_ogg_decode_from_file_to_memory() - max size smaller than 1024 bytes.\n"
              "Warning in zorn_ogg_decode_from_file_to_memory() - unable to open file '/nonexistent/x.ogg'.\n");

    zorn_soundpack pack("/nonexistent");
    sound_data record;
    EXPECT_EQ(pack.load_from_file(&record, "/nonexistent/x.ogg"), 0);
    EXPECT_EQ(record.state, sound_state_not_loaded);
}

}  // namespace
