#include "imaging/verification/DecodedSounds.h"

#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

Samples part(const Samples &sound, std::size_t first, std::size_t count)
{
    return {sound.begin() + std::ptrdiff_t(2 * first), sound.begin() + std::ptrdiff_t(2 * (first + count))};
}

} // namespace

TEST(DecodedSounds, filesInAnyOrder_areDecodedByOneProgram)
{
    const TemporaryTree tree;
    const Samples one = noise(100'000), other = tone(90'000);
    tree.makeFile("one.wav", waveFile(one));
    tree.makeFile("other.wav", waveFile(other));
    {
        DecodedSounds sounds;
        AudioDamageReport damage;
        const auto read = [&](const char *name, std::uint64_t first, std::size_t count) {
            QByteArray bytes(qsizetype(count) * 4, 'u');
            const Result<std::size_t> got = sounds.read(tree.path(name), first, bytes.data(), count, &damage, {});
            EXPECT_TRUE(got) << got.error().localizedDescription().toStdString();
            return samplesOf(bytes.first(qsizetype(got ? *got : 0) * 4));
        };
        EXPECT_EQ(read("one.wav", 0, 1000), part(one, 0, 1000));
        EXPECT_EQ(read("one.wav", 1000, 70'000), part(one, 1000, 70'000));
        EXPECT_EQ(read("other.wav", 20'000, 500), part(other, 20'000, 500));
        EXPECT_EQ(read("one.wav", 99'000, 2000), part(one, 99'000, 1000)) << "up to the end";
        EXPECT_EQ(read("one.wav", 5, 10), part(one, 5, 10)) << "from the beginning again";
        EXPECT_EQ(read("one.wav", 200'000, 10), Samples());
        EXPECT_TRUE(damage.isEmpty());
        EXPECT_EQ(childrenOfThisThread().size(), 1);
    }
    EXPECT_EQ(childrenOfThisThread().size(), 0);
}
