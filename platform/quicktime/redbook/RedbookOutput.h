#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <cstddef>

namespace Tessaron
{

/// Where the sound of a CD goes: a FIFO that another program reads, or standard output. What is written comes in whole
/// frames of 2352 bytes. SIGPIPE must be ignored.
class RedbookOutput
{
public:
    enum class State {
        Good,
        ReaderIsGone, ///< no failure of ours, so nothing is printed
        Failed, ///< error() says why
    };

    /// Opens a FIFO for writing as soon as a program reads it, or, for "-", takes standard output. Only FIFOs: no file
    /// is overwritten. Waits for a reader as long as the process that started this one lives.
    [[nodiscard]] static Result<RedbookOutput> open(const QByteArray &path);

    [[nodiscard]] State write(const char *bytes, std::size_t length);

    /// Fills the last frame with zeros and waits until the reader has taken the last byte: one that looks whether its
    /// writer still runs before it reads would lose the end otherwise.
    [[nodiscard]] State finish();

    [[nodiscard]] NSError error() const { return m_error; }

private:
    RedbookOutput(UniqueDescriptor descriptor, QByteArray path);
    [[nodiscard]] State stateOf(int errnoValue);
    [[nodiscard]] State waitUntilDrained();

    UniqueDescriptor m_descriptor;
    QByteArray m_path;
    std::size_t m_inFrame = 0; ///< bytes written of the frame that is not complete
    NSError m_error;
};

} // namespace Tessaron
