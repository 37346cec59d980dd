#include "platform/coreservices/ResourceFork.h"

#include <gtest/gtest.h>
#include <random>

using namespace Tessaron;

namespace
{

constexpr std::uint32_t iconType = 0x69636E73; // 'icns'
constexpr std::uint32_t textType = 0x54455854; // 'TEXT'

Resource makeResource(std::uint32_t type, std::int16_t id, const QByteArray &data, const QByteArray &name = {})
{
    Resource resource;
    resource.type = type;
    resource.id = id;
    resource.data = data;
    resource.name = name;
    return resource;
}

/// A fork with one icon, written down from the format's description.
QByteArray forkWithOneIcon()
{
    const QByteArray header = QByteArray::fromHex("00000100 00000107 00000007 00000032");
    return header + QByteArray(240, '\0') + QByteArray::fromHex("00000003 616263") // data
        + header + QByteArray::fromHex("00000000 0000 0000 001C 0032") // map
        + QByteArray::fromHex("0000 69636E73 0000 000A") // one type, one resource of it
        + QByteArray::fromHex("BFB9 FFFF 00000000 00000000"); // id -16455, no name
}

} // namespace

TEST(ResourceFork, forkWithResources_givesTheDocumentedBytes)
{
    EXPECT_EQ(forkWithResources({makeResource(iconType, -16455, "abc")}).toHex(), forkWithOneIcon().toHex());
}

TEST(ResourceFork, resourcesOfFork_readsTheDocumentedBytes)
{
    EXPECT_EQ(resourcesOfFork(forkWithOneIcon()), std::vector{makeResource(iconType, -16455, "abc")});
}

TEST(ResourceFork, resourcesOfFork_returnsWhatWasPutIn_sortedByType)
{
    Resource locked = makeResource(textType, 2, QByteArray(5000, 'x'), "Na\xCCme");
    locked.attributes = 0x10;
    const std::vector<Resource> resources = {
        makeResource(iconType, -16455, "icon"),
        locked,
        makeResource(textType, 1, "", QByteArray("")),
    };
    const auto read = resourcesOfFork(forkWithResources(resources));
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, (std::vector{resources[1], resources[2], resources[0]}));
    EXPECT_FALSE((*read)[1].name.isNull()) << "an empty name is a name";
    EXPECT_TRUE((*read)[2].name.isNull());
}

TEST(ResourceFork, resourcesOfFork_hasNone_forAnEmptyForkAndAnEmptyMap)
{
    EXPECT_EQ(resourcesOfFork({}), std::vector<Resource>());
    EXPECT_EQ(resourcesOfFork(forkWithResources({})), std::vector<Resource>());
}

TEST(ResourceFork, resourcesOfFork_hasNoValue_forOtherBytes)
{
    EXPECT_EQ(resourcesOfFork("x"), std::nullopt);
    EXPECT_EQ(resourcesOfFork(QByteArray(1000, '\xFF')), std::nullopt);
    const QByteArray fork = forkWithOneIcon();
    for (qsizetype length = 1; length < fork.size(); ++length)
        EXPECT_EQ(resourcesOfFork(fork.first(length)), std::nullopt) << length;
}

TEST(ResourceFork, forkWithResources_isNull_whenTheFormatCannotHoldThem)
{
    EXPECT_TRUE(forkWithResources({makeResource(textType, 1, "", QByteArray(256, 'n'))}).isNull());
    const Resource big = makeResource(textType, 1, QByteArray(qsizetype{16} * 1024 * 1024, 'x'));
    EXPECT_TRUE(forkWithResources({big, big}).isNull());
    EXPECT_TRUE(forkWithResources(std::vector<Resource>(70000, makeResource(textType, 1, ""))).isNull());
}

TEST(ResourceFork, resourcesOfFork_takesNoMoreThanThereIs_forMutatedForks)
{
    const QByteArray forks[] = {
        forkWithOneIcon(),
        forkWithResources({makeResource(iconType, 1, QByteArray(300, 'i'), "name"), makeResource(textType, 2, "t")}),
    };
    for (std::uint32_t seed = 1; seed <= 30000; ++seed) {
        std::mt19937 random(seed);
        QByteArray fork = forks[seed % std::size(forks)];
        for (unsigned int count = 1 + random() % 3; count > 0; --count) {
            // The 240 bytes that mean nothing are left out.
            const auto at = qsizetype(random() % std::uint32_t(fork.size() - 240));
            fork[at < 16 ? at : at + 240] = char(random());
        }
        const auto resources = resourcesOfFork(fork);
        qsizetype taken = 0;
        for (const Resource &resource : resources.value_or(std::vector<Resource>()))
            taken += resource.data.size() + resource.name.size();
        ASSERT_LE(taken, fork.size()) << "seed " << seed;
    }
}
