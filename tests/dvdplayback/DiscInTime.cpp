#include "tests/dvdplayback/DiscInTime.h"

#include "platform/dvdplayback/player/DiscDescriber.h"
#include "tests/dvdplayback/PlayingFixture.h"

#include <array>
#include <fcntl.h>

namespace Tessaron::Testing
{

using std::chrono::milliseconds;

DiscInTime::DiscInTime(const QByteArray &standard, Device presence)
{
    device = *SharedSound::create();
    sound = *SharedSound::attach(UniqueDescriptor(::fcntl(device->descriptor(), F_DUPFD_CLOEXEC, 3)));
    session = *SharedFrames::create();
    frames = *SharedFrames::attach(UniqueDescriptor(::fcntl(session->descriptor(), F_DUPFD_CLOEXEC, 3)));
    if (presence == Device::Present)
        device->tellOpen({48'000, channels}, 960);
    else
        device->tellAbsent("none");
    files = *DiscFiles::open(*findDisc(disc(standard)));
    DiscPlayer::Hearers hearers;
    hearers.state = [this](const PlayerState &told) { state = told; };
    hearers.titleTime = [this](std::uint32_t elapsed, std::uint32_t) { timesTold.push_back({now, elapsed}); };
    hearers.frame = [this](std::uint32_t) { hearFrame(); };
    hearers.failure = [](const QString &why) { ADD_FAILURE() << why.toStdString(); };
    hearers.now = [this] { return now; };
    player.emplace(files.get(), *describeDisc(files.get()), frames.get(), sound.get(), std::move(hearers));
}

void DiscInTime::hearFrame()
{
    QImage image;
    std::uint32_t number = 0;
    ASSERT_TRUE(session->takeNewest(&image, &number));
    shown.push_back({now, image.pixel(60, 60)});
}

void DiscInTime::play(milliseconds time)
{
    for (const auto end = now + time; now < end; now += milliseconds(1)) {
        for (int turn = 0; turn < 1000 && player->advance() == milliseconds(0);)
            ++turn;
        if ((now - begin) % milliseconds(10) != milliseconds(0))
            continue;
        std::array<float, 480 * channels> samples{};
        device->take(samples, now);
        heard.append(reinterpret_cast<const char *>(samples.data()), qsizetype(sizeof(samples)));
    }
}

DiscInTime::Clock::time_point DiscInTime::whenHeard(std::size_t frame) const
{
    return begin + milliseconds(20) + std::chrono::microseconds(frame * 1'000'000 / 48'000);
}

std::optional<std::size_t> DiscInTime::firstShown(QRgb colour, std::size_t from) const
{
    for (std::size_t index = from; index < shown.size(); ++index) {
        if (isAbout(shown[index].colour, colour))
            return index;
    }
    return std::nullopt;
}

} // namespace Tessaron::Testing
