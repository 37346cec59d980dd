// TessaronDVDSound: plays what another process puts into shared memory (SharedSound.h): the helper of a DVD session, or
// a program that lets people hear sound files. Not for people: it is started with that memory as its standard output,
// and ends with its standard input. An argument is the rate at which the other side gives samples; without one it asks
// for that of the device.

#define SDL_MAIN_HANDLED
#include "platform/dvdplayback/SharedSound.h"

#include <SDL.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace Tessaron;

namespace
{

constexpr std::uint32_t surroundChannels = 6;
/// A fiftieth of a second: what a late wake-up may cost, and how much a picture can be behind a pause.
constexpr Uint16 framesAtATime = 1024;
constexpr int lowestRate = 8000;
constexpr int highestRate = 192'000;

/// Called on a thread of SDL's.
void fill(void *sound, Uint8 *bytes, int length)
{
    static_cast<SharedSound *>(sound)->take({reinterpret_cast<float *>(bytes), std::size_t(length) / sizeof(float)},
                                            SharedSound::Clock::now());
}

std::uint32_t channelsOfDevice()
{
    SDL_AudioSpec usual{};
    char *name = nullptr;
    if (SDL_GetDefaultAudioInfo(&name, &usual, 0) != 0)
        return SoundForm().channels;
    SDL_free(name);
    return usual.channels >= surroundChannels ? surroundChannels : usual.channels == 1 ? 1 : SoundForm().channels;
}

/// 0 when there is no device. With a rate, it is SDL that converts to that of the device.
SDL_AudioDeviceID openDevice(SharedSound *sound, int rate)
{
    const char *const name = rate == 0 ? "DVD" : "Tessaron";
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, name);
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, name);
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, rate == 0 ? "video" : "music");
    SDL_AudioDeviceID device = 0;
    SDL_AudioSpec wanted{}, got{};
    if (SDL_Init(SDL_INIT_AUDIO) == 0) {
        wanted.freq = rate == 0 ? int(SoundForm().rate) : rate;
        wanted.format = AUDIO_F32SYS;
        wanted.channels = Uint8(channelsOfDevice());
        wanted.samples = framesAtATime;
        wanted.callback = fill;
        wanted.userdata = sound;
        // Another rate is converted to by the helper, better than by SDL.
        device = SDL_OpenAudioDevice(nullptr, 0, &wanted, &got, rate == 0 ? SDL_AUDIO_ALLOW_FREQUENCY_CHANGE : 0);
    }
    if (device == 0)
        sound->tellAbsent(SDL_GetError());
    else
        sound->tellOpen({std::uint32_t(got.freq), got.channels}, got.samples);
    return device;
}

void waitForEndOfInput()
{
    for (;;) {
        char byte = 0;
        const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
        if (count == 0 || (count < 0 && errno != EINTR))
            return;
    }
}

} // namespace

int main(int argc, char **arguments)
{
    // Nothing that a library prints may go into the memory.
    UniqueDescriptor memory(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    const UniqueDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    const bool isOut = nowhere && ::dup2(nowhere.get(), STDOUT_FILENO) >= 0;
    Result<std::unique_ptr<SharedSound>> sound = SharedSound::attach(std::move(memory));
    const int rate = argc == 2 ? std::atoi(arguments[1]) : 0;
    const bool isUsed = argc == 1 || (argc == 2 && rate >= lowestRate && rate <= highestRate);
    if (!isUsed || !isOut || !sound) {
        std::fputs("TessaronDVDSound is started by TessaronClasses\n", stderr);
        return 2;
    }
    const SDL_AudioDeviceID device = openDevice(sound->get(), rate);
    if (device != 0)
        SDL_PauseAudioDevice(device, 0);
    waitForEndOfInput();
    if (device != 0)
        SDL_CloseAudioDevice(device);
    SDL_Quit();
    return 0;
}
