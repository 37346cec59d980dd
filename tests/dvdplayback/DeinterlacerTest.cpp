#include "platform/dvdplayback/player/Deinterlacer.h"

#include "tests/support/RunProgram.h"

#include <cmath>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr int width = 352, height = 288;
constexpr qsizetype size = qsizetype(width) * height * 3 / 2;

/// Whole pictures that move, 50 a second; interlaced, 25 a second; and those of another program's best filter.
QByteArray moving(const QByteArray &filters)
{
    const QByteArray source = "testsrc2=s=352x288:r=50:d=0.8,rotate=0.5*t:fillcolor=gray,format=yuv420p";
    const ProgramRun run =
        runProgram("ffmpeg", {"-nostdin", "-v", "error", "-f", "lavfi", "-i", source + filters, "-f", "rawvideo", "-"});
    EXPECT_EQ(run.status, 0) << run.errors.constData();
    return run.output;
}

VideoPicture picture(const QByteArray &bytes, bool isInterlaced)
{
    VideoPicture made;
    made.frame.reset(av_frame_alloc());
    made.frame->width = width;
    made.frame->height = height;
    made.frame->format = AV_PIX_FMT_YUV420P;
    made.frame->interlaced_frame = isInterlaced ? 1 : 0;
    made.frame->top_field_first = 1;
    made.duration = 3600;
    EXPECT_EQ(av_frame_get_buffer(made.frame.get(), 0), 0);
    const auto *from = bytes.constData();
    for (int plane = 0; plane < 3; ++plane) {
        for (int line = 0; line < (plane == 0 ? height : height / 2); ++line) {
            const int length = plane == 0 ? width : width / 2;
            std::copy_n(from, length, made.frame->data[plane] + std::ptrdiff_t(line) * made.frame->linesize[plane]);
            from += length;
        }
    }
    return made;
}

QByteArray bytesOf(const AVFrame &frame)
{
    QByteArray bytes;
    for (int plane = 0; plane < 3; ++plane)
        for (int line = 0; line < (plane == 0 ? height : height / 2); ++line)
            bytes.append(reinterpret_cast<const char *>(frame.data[plane])
                             + std::ptrdiff_t(line) * frame.linesize[plane],
                         plane == 0 ? width : width / 2);
    return bytes;
}

/// Peak signal to noise, decibels.
double likeness(const QByteArray &one, const QByteArray &other)
{
    EXPECT_EQ(one.size(), other.size());
    double sum = 0;
    for (qsizetype index = 0; index < std::min(one.size(), other.size()); ++index) {
        const double off = double(std::uint8_t(one[index])) - double(std::uint8_t(other[index]));
        sum += off * off;
    }
    return 10 * std::log10(255.0 * 255.0 * double(one.size()) / std::max(sum, 1e-9));
}

TEST(DeinterlacerTest, pictures_areAsGoodAsThoseOfAnotherProgram)
{
    const QByteArray whole = moving({}), interlaced = moving(",tinterlace=interleave_top,setfield=tff");
    const QByteArray byAnother =
        moving(",tinterlace=interleave_top,setfield=tff,bwdif=mode=send_field:parity=tff:deint=all");
    ASSERT_EQ(whole.size(), 40 * size);
    ASSERT_EQ(interlaced.size(), 20 * size);
    ASSERT_EQ(byAnother.size(), 40 * size);
    Deinterlacer deinterlacer;
    QByteArray ours;
    std::vector<std::int64_t> times;
    const auto visitor = [&](const VideoPicture &made) {
        ours += bytesOf(*made.frame);
        times.push_back(made.time.value_or(-1));
        EXPECT_EQ(made.duration, 1800);
    };
    for (qsizetype index = 0; index < 20; ++index) {
        VideoPicture next = picture(interlaced.sliced(index * size, size), true);
        next.time = index * 3600;
        deinterlacer.add(std::move(next), visitor);
    }
    deinterlacer.drain(visitor);
    ASSERT_EQ(ours.size(), 40 * size);
    for (std::size_t index = 0; index < times.size(); ++index)
        EXPECT_EQ(times[index], std::int64_t(index) * 1800);
    const double likenessOfOurs = likeness(ours, whole), likenessOfOther = likeness(byAnother, whole);
    RecordProperty("ours", QByteArray::number(likenessOfOurs).toStdString());
    RecordProperty("theirs", QByteArray::number(likenessOfOther).toStdString());
    EXPECT_GE(likenessOfOurs, likenessOfOther - 0.2);
    EXPECT_GT(likenessOfOurs, likeness(moving(",tinterlace=interleave_top,separatefields,scale=352:288"), whole) + 1)
        << "better than half pictures made higher";
}

TEST(DeinterlacerTest, pictureThatStands_isWhole)
{
    const QByteArray still = moving({}).first(size);
    Deinterlacer deinterlacer;
    int count = 0;
    const auto visitor = [&](const VideoPicture &made) {
        EXPECT_EQ(bytesOf(*made.frame), still);
        ++count;
    };
    for (int index = 0; index < 3; ++index)
        deinterlacer.add(picture(still, true), visitor);
    EXPECT_EQ(count, 4) << "one is kept until the next is known";
    deinterlacer.drain(visitor);
    EXPECT_EQ(count, 6);
}

TEST(DeinterlacerTest, wholePictures_passThrough)
{
    const QByteArray whole = moving({});
    Deinterlacer deinterlacer;
    std::vector<QByteArray> made;
    const auto visitor = [&](const VideoPicture &next) { made.push_back(bytesOf(*next.frame)); };
    deinterlacer.add(picture(whole.first(size), false), visitor);
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(made.front(), whole.first(size));
    deinterlacer.add(picture(whole.sliced(size, size), true), visitor);
    EXPECT_EQ(made.size(), 1U);
    deinterlacer.add(picture(whole.sliced(2 * size, size), false), visitor);
    ASSERT_EQ(made.size(), 4U);
    EXPECT_EQ(made.back(), whole.sliced(2 * size, size));
}

} // namespace

} // namespace Tessaron::Testing
