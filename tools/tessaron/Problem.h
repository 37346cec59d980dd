#pragma once

#include <TessaronClasses/DiscJobErrors.h>

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Tessaron::Tool
{

/// Why a command cannot go on, as a value: what happened, where, and what to do about it. A default-made one means that
/// all is well.
struct Problem {
    enum class Kind : std::uint8_t {
        None,
        Usage, ///< the command line
        Source, ///< something that was to be read
        Destination, ///< where the result was to go
        Space, ///< too little room for the result
        Layout, ///< the disc's structure could not be made
        Write, ///< making or writing the image failed
        NotStored, ///< something cannot be stored and --strict was given
        Interrupted,
    };

    Kind kind = Kind::None;
    QString message; ///< a sentence without the full stop, paths inside as lossless text
    QString advice; ///< what to do, a full sentence; may be empty
    QByteArray path; ///< the file it happened to, as bytes; may be empty
    qint64 code = 0; ///< the library's status code, 0 when there is none

    [[nodiscard]] bool isNone() const { return kind == Kind::None; }
    explicit operator bool() const { return !isNone(); }
};

/// The problem of a command that a signal has ended.
[[nodiscard]] Problem interruption();

/// The problem that an error of a job is (DiscJobErrors.h); none for the null error.
[[nodiscard]] Problem problemOf(const NSError &error);

/// The name under which --json reports the kind: "usage", "source" …
[[nodiscard]] QString nameOfKind(Problem::Kind kind);

} // namespace Tessaron::Tool
