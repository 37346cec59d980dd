#include "platform/disctracks/vant/VANTReader.h"
#include "tests/disctracks/vant/VANTSamples.h"
#include <TessaronClasses/VANTHeader.h>

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <random>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

void expectPromisesKept(const QByteArray &bytes, std::uint32_t seed)
{
    const VANTReadResult result = VANTReader::imageFromBytes(bytes);
    const QByteArray broken = brokenPromise(result, quint64(bytes.size()));
    ASSERT_TRUE(broken.isEmpty()) << broken.constData() << ", seed " << seed;
}

/// Changes, inserts, removes or repeats a few bytes, mostly in the trailer.
void mutate(QByteArray *bytes, std::mt19937 &random)
{
    static constexpr std::uint8_t telling[] = {0, 1, 0x7F, 0x80, 0xFE, 0xFF, 'S', 'T', 'C'};
    const auto below = [&random](qsizetype limit) { return qsizetype(random() % std::uint32_t(limit)); };
    for (qsizetype count = 1 + below(4); count > 0 && bytes->size() > 1; --count) {
        const qsizetype at = bytes->size() - 1 - below(std::min<qsizetype>(bytes->size(), 320));
        switch (below(5)) {
        case 0:
            (*bytes)[at] = char(random());
            break;
        case 1:
            (*bytes)[at] = char(telling[std::size_t(below(std::size(telling)))]);
            break;
        case 2:
            bytes->insert(at, char(random()));
            break;
        case 3:
            bytes->remove(at, 1 + below(8));
            break;
        default:
            bytes->insert(at, bytes->sliced(at, std::min<qsizetype>(bytes->size() - at, 1 + below(80))));
        }
    }
}

} // namespace

TEST(VANTReader, imageFromBytes_keepsItsPromises_forMutatedImages)
{
    const QByteArray images[] = {
        richImage(),
        VANTHeaderForDRLayout(dataTrack(0)),
        VANTHeaderForDRLayout(DRTrackArray(99, dataTrack(0)), {QByteArray(4554, 't')}),
    };
    constexpr std::uint32_t rounds = 60000;
    std::size_t accepted = 0;
    for (std::uint32_t seed = 1; seed <= rounds; ++seed) {
        std::mt19937 random(seed);
        QByteArray bytes = images[seed % std::size(images)];
        mutate(&bytes, random);
        if (seed % 4 != 0) // otherwise nothing would get past the checksum
            correctChecksum(&bytes);
        ASSERT_NO_FATAL_FAILURE(expectPromisesKept(bytes, seed));
        accepted += VANTReader::imageFromBytes(bytes).image.has_value();
    }
    // Mutations that change a number only stay images; the test has teeth as long as some do and most do not.
    EXPECT_GT(accepted, rounds / 100);
    EXPECT_LT(accepted, rounds / 2);
}

TEST(VANTReader, imageFromBytes_keepsItsPromises_forNoise)
{
    for (std::uint32_t seed = 1; seed <= 10000; ++seed) {
        std::mt19937 random(seed);
        QByteArray bytes(qsizetype(random() % 512), '\0');
        for (char &byte : bytes)
            byte = char(random());
        correctChecksum(&bytes);
        ASSERT_NO_FATAL_FAILURE(expectPromisesKept(bytes, seed));
    }
}

TEST(VANTReader, imageFromBytes_keepsItsPromises_forEachFileOfTheCorpus)
{
    const QDir corpus(QStringLiteral(VANT_SEEDS));
    const QStringList names = corpus.entryList(QDir::Files);
    ASSERT_FALSE(names.isEmpty());
    for (const QString &name : names) {
        QFile file(corpus.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        ASSERT_NO_FATAL_FAILURE(expectPromisesKept(bytes, 0)) << qPrintable(name);
        EXPECT_EQ(VANTReader::imageFromBytes(bytes).image.has_value(), name.startsWith(QStringLiteral("good-")))
            << qPrintable(name);
    }
}
