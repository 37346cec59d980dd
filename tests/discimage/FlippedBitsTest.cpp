#include "tests/discimage/FlipHarness.h"
#include "tests/discimage/SampleImages.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

/// How many bits are flipped in all; tests/discimage/flip-bits asks for more than the suite.
int flipCount()
{
    const char *const wanted = std::getenv("TESSARON_FLIPS");
    return wanted ? std::atoi(wanted) : 1000;
}

} // namespace

/// Names, dates and permissions of which a filesystem has but one copy need the sources to be checked; docs/damage.md
/// lists them. Everything else that a reader would show differently has to be told.
TEST(FlippedBits, changeThatAReaderWouldShow_isTold_orStandsInOnePlaceOnly)
{
    const std::vector<DRFilesystemMask> combinations = sampleFilesystems();
    int flips = 0;
    int told = 0;
    int missed = 0;
    int singleCopies = 0;
    QMap<QString, int> harmless;
    for (const DRFilesystemMask filesystems : combinations) {
        const QByteArray image = sampleImage(filesystems);
        const FlipResult result =
            flipBits(image, flipCount() / int(combinations.size()), std::uint32_t(20'240'229 + filesystems));
        flips += result.flips;
        told += result.told;
        missed += int(result.missed.size());
        singleCopies += result.singleCopies;
        for (const auto &[offset, change] : result.missed) {
            ADD_FAILURE() << "filesystems " << filesystems << ", byte " << offset << ": " << change.toStdString();
        }
        for (auto place = result.harmlessPlaces.constBegin(); place != result.harmlessPlaces.constEnd(); ++place)
            harmless[place.key()] += place.value();
    }
    std::printf("%d flips: %d told; %d change a name, a date or permissions of which there is one copy; %d change "
                "something else; the rest changes nothing that a reader shows\n",
                flips, told, singleCopies, missed);
    if (std::getenv("TESSARON_FLIPS")) {
        for (auto place = harmless.constBegin(); place != harmless.constEnd(); ++place)
            std::printf("  harmless: %s: %d\n", qPrintable(place.key()), place.value());
    }
    EXPECT_EQ(missed, 0);
    EXPECT_GT(told, flips / 5);
}

} // namespace Tessaron::Testing
