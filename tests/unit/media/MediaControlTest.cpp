#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "services/SndfileMediaControl.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

constexpr int kUsable = SndfileMediaControl::kUsable;
constexpr int kUnusable = SndfileMediaControl::kUnusable;
constexpr int kUnreadable = SndfileMediaControl::kUnreadable;

struct Format {
    const char* name;
    int format;
    int channels;
};

void PrintTo(const Format& format, std::ostream* out) {
    *out << format.name;
}

class MediaControlTest : public ::testing::TestWithParam<Format> {
protected:
    int check(const std::string& content) {
        std::ofstream(path(), std::ios::binary) << content;
        const int answer = m_control.checkAudioFile(MediaControlServiceIfc::eRinger, path());
        EXPECT_EQ(m_control.checkAudioFile(MediaControlServiceIfc::eMusicOnHold, path()), answer);
        return answer;
    }
    std::string path() const { return m_directory.file("sound"); }

    /// Two seconds of a chord, encoded.
    static std::string encoded(const Format& format) {
        const TemporaryDirectory directory;
        const std::string file = directory.file("sound");
        SF_INFO info{};
        info.samplerate = 48000;
        info.channels = format.channels;
        info.format = format.format;
        SNDFILE* const sound = ::sf_open(file.c_str(), SFM_WRITE, &info);
        if (sound == nullptr) {
            return {};
        }
        std::vector<float> second(48000U * static_cast<unsigned>(format.channels));
        for (std::size_t i = 0; i < second.size(); ++i) {
            const auto time = static_cast<float>(i / static_cast<unsigned>(format.channels));
            second[i] = 0.4F * std::sin(time * 0.0576F) + 0.3F * std::sin(time * 0.0863F);
        }
        for (int i = 0; i < 2; ++i) {
            ::sf_writef_float(sound, second.data(), 48000);
        }
        ::sf_close(sound);
        std::ifstream written(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(written), {}};
    }

    TemporaryDirectory m_directory;
    SndfileMediaControl m_control;
};

TEST_P(MediaControlTest, AWholeFileIsUsableAndOneThatWasCutIsNot) {
    const std::string whole = encoded(GetParam());
    ASSERT_GT(whole.size(), 2000U) << "cannot be encoded here";
    EXPECT_EQ(check(whole), kUsable);
    for (const std::size_t length :
         {whole.size() - 1, whole.size() - 100, whole.size() * 9 / 10, whole.size() / 2,
          whole.size() / 10, std::size_t{100}, std::size_t{4}}) {
        EXPECT_EQ(check(whole.substr(0, length)), kUnusable) << length << " of " << whole.size();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, MediaControlTest,
    ::testing::Values(Format{"Wave", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1},
                      Format{"WaveStereo", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 2},
                      Format{"WaveBigEndian", SF_FORMAT_WAV | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG, 1},
                      Format{"WaveUlaw", SF_FORMAT_WAV | SF_FORMAT_ULAW, 1},
                      Format{"WaveGsm", SF_FORMAT_WAV | SF_FORMAT_GSM610, 1},
                      Format{"WaveExtensible", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 6},
                      Format{"Aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 2},
                      Format{"Au", SF_FORMAT_AU | SF_FORMAT_PCM_16, 1},
                      Format{"Flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 2},
                      Format{"Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 2},
                      Format{"Opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 1},
                      Format{"Mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 2}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(MediaControlTest, AnOggFileCutBetweenTwoPagesIsNotWhole) {
    const std::string whole = encoded({"", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 2});
    const std::size_t last = whole.rfind("OggS");
    ASSERT_NE(last, std::string::npos);
    EXPECT_EQ(check(whole.substr(0, last)), kUnusable);
}

TEST_F(MediaControlTest, AnMp3WithoutAnnouncedLengthIsPlayed) {
    // The first frame holds the announcement and no sound; the second one begins like it.
    const std::string whole = encoded({"", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 1});
    ASSERT_GT(whole.size(), 2000U);
    const std::size_t second = whole.find(whole.substr(0, 2), 4);
    EXPECT_EQ(check(whole.substr(second)), kUsable);
    const std::string tag = std::string("ID3\x04\0\0\0\0\x02\x01", 10) + std::string(257, 'x');
    EXPECT_EQ(check(tag + whole), kUsable);
    EXPECT_EQ(check((tag + whole).substr(0, whole.size() / 2)), kUnusable)
        << "the announcement stands behind the tag";
}

TEST_F(MediaControlTest, AWaveOfUnknownLengthLastsToTheEnd) {
    std::string wave = encoded({"", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1});
    wave.replace(wave.find("data") + 4, 4, "\xff\xff\xff\xff");
    EXPECT_EQ(check(wave), kUsable);
}

TEST_F(MediaControlTest, WhatIsNoSoundIsUnusable) {
    std::mt19937 random(1);
    std::string noise(100'000, '\0');
    for (char& byte : noise) {
        byte = static_cast<char>(random());
    }
    EXPECT_EQ(check(noise), kUnusable);
    EXPECT_EQ(check(""), kUnusable);
    EXPECT_EQ(check("<html>not found</html>"), kUnusable);
    EXPECT_EQ(check(std::string(5000, '\0')), kUnusable);
    const std::string wave = encoded({"", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1});
    EXPECT_EQ(check(wave.substr(0, 40) + std::string(4, '\0')), kUnusable) << "no sound in it";
    EXPECT_EQ(check(encoded({"", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 1})), kUnusable)
        << "of this format nobody knows whether it was cut";
}

TEST_F(MediaControlTest, WhatCannotBeReadIsUnreadable) {
    const auto answer = [this](const std::string& file) {
        return m_control.checkAudioFile(MediaControlServiceIfc::eRinger, file);
    };
    EXPECT_EQ(answer(m_directory.file("missing")), kUnreadable);
    EXPECT_EQ(answer(m_directory.path()), kUnreadable);
    ASSERT_EQ(::mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(answer(path()), kUnreadable) << "and does not wait for a writer";
}

std::string midiHeader(char format, char tracks, char division = 96) {
    return std::string("MThd\0\0\0\x06\0", 9) + format + '\0' + tracks + '\0' + division;
}

std::string midiChunk(const std::string& kind, const std::string& content) {
    return kind + std::string(3, '\0') + static_cast<char>(content.size()) + content;
}

TEST_F(MediaControlTest, AMidiFileHoldsTheTracksThatItAnnounces) {
    const std::string track = midiChunk("MTrk", std::string("\0\x90\x40\x40\x60\xff\x2f\0", 8));
    const std::string odd = midiChunk("XFIH", "abc");
    const struct {
        const char* what;
        std::string content;
        int answer;
    } rows[] = {
        {"one track", midiHeader(0, 1) + track, kUsable},
        {"two tracks", midiHeader(1, 2) + track + track, kUsable},
        {"a chunk of another kind", midiHeader(1, 2) + track + odd + track, kUsable},
        {"more behind them", midiHeader(0, 1) + track + "abc", kUsable},
        {"a track too few", midiHeader(1, 2) + track, kUnusable},
        {"another kind instead of a track", midiHeader(1, 2) + track + odd, kUnusable},
        {"the last byte cut", (midiHeader(0, 1) + track).substr(0, 29), kUnusable},
        {"the head of a track cut", (midiHeader(1, 2) + track + track).substr(0, 35), kUnusable},
        {"a track of 4 GiB", midiHeader(0, 1) + "MTrk\xff\xff\xff\xff", kUnusable},
        {"no track", midiHeader(1, 0) + track, kUnusable},
        {"format 3", midiHeader(3, 1) + track, kUnusable},
        {"format 0 with two tracks", midiHeader(0, 2) + track + track, kUnusable},
        {"no division of time", midiHeader(0, 1, 0) + track, kUnusable},
        {"a header cut short", "MThd", kUnusable},
        {"a short header", std::string("MThd\0\0\0\x02\0\0", 10) + track + track, kUnusable},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(check(row.content), row.answer) << row.what;
    }
}

TEST_F(MediaControlTest, SeveralThreadsAskAtTheSameTime) {
    std::ofstream(path(), std::ios::binary) << encoded({"", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 2});
    std::vector<int> answers(4, -1);
    std::vector<std::thread> threads;
    for (int& answer : answers) {
        threads.emplace_back([this, &answer] {
            for (int i = 0; i < 5; ++i) {
                answer = m_control.checkAudioFile(MediaControlServiceIfc::eRinger, path());
                m_control.checkAudioFile(MediaControlServiceIfc::eRinger, "/dev/null");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(answers, std::vector<int>(4, kUsable));
}

}  // namespace
}  // namespace vireo::test
