#include "platform/dvdplayback/SharedFrames.h"

#include <atomic>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

class SharedFramesTest : public testing::Test
{
protected:
    SharedFramesTest()
    {
        Result<std::unique_ptr<SharedFrames>> created = SharedFrames::create();
        EXPECT_TRUE(created);
        session = *std::move(created);
        Result<std::unique_ptr<SharedFrames>> attached =
            SharedFrames::attach(UniqueDescriptor(::fcntl(session->descriptor(), F_DUPFD_CLOEXEC, 3)));
        EXPECT_TRUE(attached);
        helper = *std::move(attached);
    }
    void publish(std::uint8_t value, std::uint32_t width = 720, std::uint32_t height = 480) const
    {
        std::memset(helper->pixelsToFill(), value, std::size_t(mostFrameWidth) * mostFrameHeight * 4);
        helper->publish(width, height);
    }

    std::unique_ptr<SharedFrames> session, helper;
    QImage image;
    std::uint32_t number = 0;
};

TEST_F(SharedFramesTest, takeNewest_givesEachPictureOnce)
{
    EXPECT_FALSE(session->takeNewest(&image, &number));
    publish(1);
    ASSERT_TRUE(session->takeNewest(&image, &number));
    EXPECT_EQ(number, 1U);
    EXPECT_EQ(image.size(), QSize(720, 480));
    EXPECT_EQ(image.pixel(719, 479) & 0xffffff, 0x010101U);
    EXPECT_FALSE(session->takeNewest(&image, &number));
}

TEST_F(SharedFramesTest, takeNewest_givesTheNewest_whenSeveralCame)
{
    for (std::uint8_t value = 1; value <= 7; ++value)
        publish(value, 704, 576);
    ASSERT_TRUE(session->takeNewest(&image, &number));
    EXPECT_EQ(number, 7U);
    EXPECT_EQ(image.size(), QSize(704, 576));
    EXPECT_EQ(image.pixel(0, 0) & 0xffffff, 0x070707U);
}

TEST_F(SharedFramesTest, takeNewest_refusesSizesThatNoPictureHas)
{
    for (const auto &[width, height] : {std::pair(721U, 480U), std::pair(720U, 577U), std::pair(0U, 480U),
                                        std::pair(720U, 0U), std::pair(~0U, ~0U)}) {
        publish(1, width, height);
        EXPECT_FALSE(session->takeNewest(&image, &number)) << width << ' ' << height;
    }
    publish(2);
    EXPECT_TRUE(session->takeNewest(&image, &number));
}

TEST_F(SharedFramesTest, takeNewest_staysInTheMemory_whateverTheHelperWrites)
{
    struct stat status;
    ASSERT_EQ(::fstat(session->descriptor(), &status), 0);
    void *const memory =
        ::mmap(nullptr, std::size_t(status.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, session->descriptor(), 0);
    ASSERT_NE(memory, MAP_FAILED);
    for (int round = 0; round < 16; ++round) {
        std::memset(memory, 0xff - round, std::size_t(status.st_size));
        EXPECT_FALSE(session->takeNewest(&image, &number));
    }
    ::munmap(memory, std::size_t(status.st_size));
}

TEST_F(SharedFramesTest, picture_staysUntilTheNextIsTaken_andBeyondTheSession)
{
    publish(1);
    ASSERT_TRUE(session->takeNewest(&image, &number));
    for (std::uint8_t value = 2; value <= 9; ++value)
        publish(value);
    EXPECT_EQ(image.pixel(360, 240) & 0xffffff, 0x010101U);
    const QImage kept = image.copy();
    ASSERT_TRUE(session->takeNewest(&image, &number));
    EXPECT_EQ(image.pixel(360, 240) & 0xffffff, 0x090909U);
    EXPECT_EQ(kept.pixel(360, 240) & 0xffffff, 0x010101U);
    session.reset();
    helper.reset();
    EXPECT_EQ(image.pixel(719, 479) & 0xffffff, 0x090909U);
}

TEST_F(SharedFramesTest, memory_cannotBeCut)
{
    EXPECT_NE(::ftruncate(helper->descriptor(), 0), 0);
}

TEST_F(SharedFramesTest, pictures_areWhole_whenBothSidesAreBusy)
{
    std::atomic<bool> isDone = false;
    std::thread filling([&] {
        for (int round = 0; round < 300; ++round)
            publish(std::uint8_t(round % 251));
        isDone = true;
    });
    std::uint32_t last = 0;
    while (!isDone) {
        if (!session->takeNewest(&image, &number))
            continue;
        EXPECT_GT(number, last);
        last = number;
        const QRgb first = image.pixel(0, 0);
        EXPECT_EQ(image.pixel(719, 479), first);
        EXPECT_EQ(image.pixel(360, 240), first);
    }
    filling.join();
}

} // namespace

} // namespace Tessaron
