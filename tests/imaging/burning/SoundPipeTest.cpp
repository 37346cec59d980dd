#include "imaging/burning/SoundPipe.h"

#include "platform/foundation/DescriptorIO.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <atomic>
#include <gtest/gtest.h>
#include <new>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

constexpr std::size_t more = std::size_t(3) << 20; // bytes; than a pipe holds

NSError someError()
{
    return discJobError(DiscJobErrorCode::Source, QStringLiteral("the file is gone"));
}

/// Writes that many bytes, each with the number of its KiB.
NSError writeNumbered(int out, std::size_t length, const std::stop_token &stop)
{
    constexpr std::size_t piece = 1024;
    for (std::size_t done = 0; done < length && !stop.stop_requested(); done += piece) {
        const std::vector<char> bytes(piece, char(done / piece));
        if (const int failure = writeFully(out, bytes.data(), bytes.size()); failure != 0)
            return NSError::errorWithErrno(failure, {});
    }
    return stop.stop_requested() ? discJobCancellation() : NSError();
}

SoundPipe::Make making(std::size_t length)
{
    return [length](int out, const std::stop_token &stop) { return writeNumbered(out, length, stop); };
}

} // namespace

TEST(SoundPipe, bytes_comeInTheirOrder_inAnyPieces)
{
    SoundPipe pipe;
    ASSERT_FALSE(pipe.start(making(more), {}));
    std::vector<char> all(more);
    constexpr std::size_t first = 2352;
    EXPECT_FALSE(pipe.take(all.data(), first));
    EXPECT_FALSE(pipe.take(all.data() + first, more - first));
    EXPECT_FALSE(pipe.finish());
    for (std::size_t at = 0; at < more; at += 1000)
        ASSERT_EQ(all[at], char(at / 1024)) << at;
}

TEST(SoundPipe, errorOfTheMaking_isThatOfTheTaking)
{
    SoundPipe pipe;
    ASSERT_FALSE(pipe.start(
        [](int out, const std::stop_token &stop) {
            static_cast<void>(writeNumbered(out, 2048, stop));
            return someError();
        },
        {}));
    std::vector<char> bytes(4096);
    EXPECT_EQ(pipe.take(bytes.data(), bytes.size()).localizedDescription(), someError().localizedDescription());
    EXPECT_TRUE(pipe.take(bytes.data(), 1)); // and again: it does not wait for what has ended
}

TEST(SoundPipe, errorBehindTheLastByte_isNotLost)
{
    SoundPipe pipe;
    ASSERT_FALSE(pipe.start(
        [](int out, const std::stop_token &stop) {
            static_cast<void>(writeNumbered(out, 2048, stop));
            return someError();
        },
        {}));
    std::vector<char> bytes(2048);
    EXPECT_FALSE(pipe.take(bytes.data(), bytes.size()));
    EXPECT_EQ(pipe.finish().localizedDescription(), someError().localizedDescription());
}

TEST(SoundPipe, soundOfAnotherLength_isAnError)
{
    std::vector<char> bytes(2048);
    SoundPipe longer;
    ASSERT_FALSE(longer.start(making(more), {}));
    EXPECT_FALSE(longer.take(bytes.data(), bytes.size()));
    EXPECT_TRUE(longer.finish());
    SoundPipe shorter;
    ASSERT_FALSE(shorter.start(making(1024), {}));
    EXPECT_TRUE(shorter.take(bytes.data(), bytes.size()));
}

TEST(SoundPipe, lackOfMemory_isAnError)
{
    SoundPipe pipe;
    ASSERT_FALSE(pipe.start([](int, const std::stop_token &) -> NSError { throw std::bad_alloc(); }, {}));
    EXPECT_TRUE(pipe.finish());
}

TEST(SoundPipe, destruction_endsAMakingThatWaitsForRoom)
{
    std::atomic<bool> wasTold = false;
    {
        SoundPipe pipe;
        ASSERT_FALSE(pipe.start(
            [&wasTold](int out, const std::stop_token &stop) {
                NSError error = writeNumbered(out, 64 * more, stop);
                wasTold = stop.stop_requested();
                return error;
            },
            {}));
        std::vector<char> bytes(2048);
        EXPECT_FALSE(pipe.take(bytes.data(), bytes.size()));
    }
    EXPECT_TRUE(wasTold);
}

TEST(SoundPipe, stopOfTheJob_reachesTheMaking)
{
    std::stop_source job;
    SoundPipe pipe;
    ASSERT_FALSE(pipe.start(making(64 * more), job.get_token()));
    std::vector<char> bytes(2048);
    EXPECT_FALSE(pipe.take(bytes.data(), bytes.size()));
    job.request_stop();
    NSError error;
    while (!error) // what was written before the stop comes first
        error = pipe.take(bytes.data(), bytes.size());
    EXPECT_TRUE(isDiscJobError(error, DiscJobErrorCode::Cancelled)) << error.localizedDescription().toStdString();
}

} // namespace Tessaron::Testing
