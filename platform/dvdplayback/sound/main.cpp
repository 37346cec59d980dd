// TessaronDVDSound: plays what the helper of a DVD session puts into shared memory (SharedSound.h). Not for people: it
// is started with that memory as its standard output, and ends with its standard input.

#define SDL_MAIN_HANDLED
#include "platform/dvdplayback/SharedSound.h"

#include <SDL.h>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

using namespace Tessaron;

namespace
{

constexpr std::uint32_t surroundChannels = 6;
/// A fiftieth of a second: what a late wake-up may cost, and how much a picture can be behind a pause.
constexpr Uint16 framesAtATime = 1024;

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

/// 0 when there is no device.
SDL_AudioDeviceID openDevice(SharedSound *sound)
{
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "DVD");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "DVD");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, "video");
    SDL_AudioDeviceID device = 0;
    SDL_AudioSpec wanted{}, got{};
    if (SDL_Init(SDL_INIT_AUDIO) == 0) {
        wanted.freq = int(SoundForm().rate);
        wanted.format = AUDIO_F32SYS;
        wanted.channels = Uint8(channelsOfDevice());
        wanted.samples = framesAtATime;
        wanted.callback = fill;
        wanted.userdata = sound;
        // Another rate is converted to by the helper, better than by SDL.
        device = SDL_OpenAudioDevice(nullptr, 0, &wanted, &got, SDL_AUDIO_ALLOW_FREQUENCY_CHANGE);
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

int main(int argc, char ** /*arguments*/)
{
    // Nothing that a library prints may go into the memory.
    UniqueDescriptor memory(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    const UniqueDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    const bool isOut = nowhere && ::dup2(nowhere.get(), STDOUT_FILENO) >= 0;
    Result<std::unique_ptr<SharedSound>> sound = SharedSound::attach(std::move(memory));
    if (argc != 1 || !isOut || !sound) {
        std::fputs("TessaronDVDSound is started by TessaronClasses\n", stderr);
        return 2;
    }
    const SDL_AudioDeviceID device = openDevice(sound->get());
    if (device != 0)
        SDL_PauseAudioDevice(device, 0);
    waitForEndOfInput();
    if (device != 0)
        SDL_CloseAudioDevice(device);
    SDL_Quit();
    return 0;
}
