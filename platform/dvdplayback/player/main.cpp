// TessaronDVDPlayer: reads, navigates and decodes one DVD-Video disc for a session in another process, to which it is
// connected by the socket that it is started with (PlayerProtocol.h). Not for people.

#include "platform/dvdplayback/player/ImageInput.h"
#include "platform/dvdplayback/player/PlayerServer.h"

#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace Tessaron;

/// Instead of the system's: the library that reads discs would load one that circumvents copy protection wherever it is
/// installed. It gets nothing, or what reads the sectors of images of other forms. Nothing else in this process loads
/// libraries.
extern "C" __attribute__((visibility("default"))) void *dlopen(const char * /*name*/, int /*mode*/) noexcept
{
    return ImageInput::handle();
}

int main(int argc, char ** /*arguments*/)
{
    if (argc != 1) {
        std::fputs("TessaronDVDPlayer is started by TessaronClasses\n", stderr);
        return 2;
    }
    ::close_range(playerSoundDescriptor + 1, ~0U, 0);
    std::signal(SIGPIPE, SIG_IGN);
    // Both are absent where the session only wants a description.
    Result<std::unique_ptr<SharedFrames>> frames = SharedFrames::attach(UniqueDescriptor(playerFramesDescriptor));
    Result<std::unique_ptr<SharedSound>> sound = SharedSound::attach(UniqueDescriptor(playerSoundDescriptor));
    PlayerServer server(UniqueDescriptor(playerSocketDescriptor),
                        frames ? *std::move(frames) : std::unique_ptr<SharedFrames>(),
                        sound ? *std::move(sound) : std::unique_ptr<SharedSound>());
    server.run();
    // Threads of the libraries need not be waited for.
    std::fflush(nullptr);
    ::_exit(0);
}
