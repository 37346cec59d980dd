#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <variant>

namespace Tessaron
{

class KRAudioMaker;

/// An audio or movie file that becomes an audio track of a CD. Not thread-safe; opening the file may take as long as
/// reading it.
class TESSARON_EXPORT KRAudioTrack
{
public:
    /// Null when nothing is at the path. A symbolic link at its end is followed.
    [[nodiscard]] static std::shared_ptr<KRAudioTrack> audioTrackWithFileAtPath(const QString &path);
    [[nodiscard]] static std::shared_ptr<KRAudioTrack> initWithFileAtPath(const QString &path);
    /// The reference is copied, and not looked at.
    [[nodiscard]] static std::shared_ptr<KRAudioTrack> audioTrackWithFSRef(const FSRef *ref);
    [[nodiscard]] static std::shared_ptr<KRAudioTrack> initWithFSRef(const FSRef *ref);

    /// As KRstringWithFSRef() gives it; null when the file is gone.
    [[nodiscard]] QString path() const;

    /// The length of the track in bytes of CD audio, kept once it is known: the file's whole seconds and a frame. What
    /// lies behind the last whole second is left out (a file of 3.9 s has 226 frames). 0 for a file that cannot be
    /// opened, and for one that claims more than any number holds; either is tried again at the next call.
    [[nodiscard]] std::uint64_t size();

    /// What makes the track: nothing when the file is gone, or, without the custom exporter, when it holds no sound; a
    /// track that the disc recording decodes itself; or an audio maker. A file whose extension is "mov" always gets an
    /// audio maker.
    using Producer = std::variant<std::monostate, std::shared_ptr<DRTrack>, std::shared_ptr<KRAudioMaker>>;
    [[nodiscard]] Producer _dataProducer(bool useCustomExporter);

    /// Always an audio maker, with the file and its size; null when the file is gone.
    [[nodiscard]] std::shared_ptr<KRAudioMaker> dataProducer();

    /// The finished track of _dataProducer(); null without one.
    [[nodiscard]] std::shared_ptr<DRTrack> trackUsingCustomExporter(bool useCustomExporter);

private:
    explicit KRAudioTrack(const FSRef &ref);

    const FSRef m_fileRef;
    std::uint64_t m_size = 0;
};

} // namespace Tessaron
