#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/OSStatus.h"

#include <QString>

namespace Tessaron
{

/// A small preview player for video DVDs, in a window of its own: one for the whole process, without controls. It uses
/// the same session as DVDController, so that only one of the two can be at work. On the main thread.
///
/// A call of the session that fails is printed on standard output as "DVD Error -70015".
class TESSARON_EXPORT DVDReader
{
public:
    /// Opens the disc at the path, a volume or a folder, in a window that stays hidden until play(). An older preview
    /// is closed first. False when that failed. Throws where the older preview's session is gone and the
    /// NSAssertionHandler throws: that preview stays then.
    static bool openMedia(const QString &path, bool isVolume);
    /// Shows the window in the disc's own size and plays; brings it to the front where it plays already.
    static void play();
    static void stop();
    /// Reports a failure of the session to the NSAssertionHandler, with the file "DVDReader".
    [[nodiscard]] static bool isMediaOpen();
    /// Stops, closes media and forgets the window.
    static void closeMediaReleaseMemory();
    /// Tells the session where the picture lies; what the session answers. Without a window that is an empty place.
    static OSStatus setVideoBounds();
    /// Tells the session which screen the window is on, if that is another one than before; what the session answers. 0
    /// without a window.
    static OSStatus setVideoDisplay();

    // What its instances hear. All state is the process's: they have none.

    /// The preview window has been closed by the user, or by another preview.
    void windowWillClose();
    /// The program ends: the session does, too.
    void appWillTerminate();
};

} // namespace Tessaron
