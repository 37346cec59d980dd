#pragma once

#include "platform/foundation/Result.h"
#include "platform/quicktime/MediaFile.h"
#include "platform/quicktime/decoding/FFmpegHandles.h"

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <stop_token>

namespace Tessaron
{

/// A regular file as the input of FFmpeg's libraries, which never open anything themselves. One thread at a time.
class LocalMediaFile
{
public:
    /// Opens without waiting: folders, devices, sockets and pipes are refused.
    [[nodiscard]] static Result<std::unique_ptr<LocalMediaFile>> open(const QByteArray &path, std::stop_token stop);

    LocalMediaFile(const LocalMediaFile &) = delete;
    LocalMediaFile &operator=(const LocalMediaFile &) = delete;

    [[nodiscard]] AVIOContext *context() const { return m_context.get(); }
    /// The file itself, for those who read it without the libraries.
    [[nodiscard]] const MediaFile &file() const { return m_file; }
    [[nodiscard]] const QByteArray &path() const { return m_file.path(); }
    [[nodiscard]] std::int64_t length() const { return m_file.length(); }
    [[nodiscard]] std::int64_t position() const { return m_position; }
    [[nodiscard]] bool isCancelled() const { return m_stop.stop_requested(); }

    /// What may be read from now on; then reading fails, so that hostile structures cannot lead a parser in circles or
    /// through a terabyte of nothing. Each read costs its bytes, 4096 at least. None is set at first.
    void setReadBudget(std::int64_t bytes) { m_budget = bytes; }
    [[nodiscard]] bool isBudgetUsedUp() const { return m_budget <= 0; }

    /// The `errno` value of the last read that the system failed; 0 when there was none.
    [[nodiscard]] int failure() const { return m_failure; }

private:
    LocalMediaFile(MediaFile file, std::stop_token stop);
    static int read(void *self, std::uint8_t *buffer, int size);
    static std::int64_t seek(void *self, std::int64_t offset, int whence);

    const MediaFile m_file;
    const std::stop_token m_stop;
    std::int64_t m_position = 0;
    std::int64_t m_budget = INT64_MAX;
    int m_failure = 0;
    IOContext m_context;
};

} // namespace Tessaron
