#pragma once

#include "tests/quicktime/Sounds.h"
#include "tests/tools/ImageFixture.h"

#include <set>
#include <string>

namespace Tessaron::Testing
{

using Names = std::set<std::string>;

inline constexpr qsizetype frameSize = 2352;
inline constexpr std::size_t samplesPerFrame = 588;
/// Just more than the four seconds that a track has at least, and no whole frames.
inline constexpr std::size_t oneLength = 4 * 44100 + 123, otherLength = 5 * 44100 + 400, thirdLength = 4 * 44100 + 501;

inline QByteArray bytesOf(const Samples &samples)
{
    return QByteArray(reinterpret_cast<const char *>(samples.data()), qsizetype(samples.size() * 2));
}

inline QByteArray zeros(qsizetype count)
{
    return QByteArray(count, '\0');
}

inline QByteArray wholeFrames(const QByteArray &bytes)
{
    return bytes + zeros((frameSize - bytes.size() % frameSize) % frameSize);
}

inline Samples partOf(const Samples &whole, std::size_t begin, std::size_t count)
{
    return Samples(whole.begin() + std::ptrdiff_t(2 * begin), whole.begin() + std::ptrdiff_t(2 * (begin + count)));
}

class Audio : public ImageTest
{
protected:
    /// Three files that were cut from one recording, of other lengths than whole frames.
    void makeAlbum() const
    {
        m_tree.makeFile("1.wav", waveFile(partOf(recording, 0, oneLength)));
        m_tree.makeFile("2.wav", waveFile(partOf(recording, oneLength, otherLength)));
        m_tree.makeFile("3.wav", waveFile(partOf(recording, oneLength + otherLength, thirdLength)));
    }
    [[nodiscard]] QList<QByteArray> arguments(const QList<QByteArray> &options, const QList<QByteArray> &files) const
    {
        QList<QByteArray> words = {"audio", "-o", m_tree.path("out/album.bin")};
        words += options;
        for (const QByteArray &file : files)
            words << m_tree.path(file);
        return words;
    }
    [[nodiscard]] ChildResult run(const QList<QByteArray> &options, const QList<QByteArray> &files) const
    {
        return runTessaron(arguments(options, files));
    }
    void make(const QList<QByteArray> &options, const QList<QByteArray> &files) const
    {
        const ChildResult result = run(options, files);
        EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    }
    [[nodiscard]] QByteArray bin() const { return m_tree.contents("out/album.bin"); }
    [[nodiscard]] QByteArray cue() const { return m_tree.contents("out/album.cue"); }
    void expectNothing(const ChildResult &result, int status, const char *says) const
    {
        EXPECT_EQ(result.exitStatus, status);
        EXPECT_TRUE(result.errors.contains(says)) << result.errors.constData();
        EXPECT_EQ(outNames(), Names());
    }

    const Samples recording = noise(oneLength + otherLength + thirdLength);
};

/// Frames that lie before the sample where a track begins, and up to the next whole one.
inline qsizetype framesUpTo(std::size_t samples)
{
    return qsizetype((samples + samplesPerFrame - 1) / samplesPerFrame);
}

} // namespace Tessaron::Testing
