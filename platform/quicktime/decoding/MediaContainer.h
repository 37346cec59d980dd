#pragma once

#include "platform/quicktime/decoding/LocalMediaFile.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <memory>
#include <optional>
#include <stop_token>

namespace Tessaron
{

/// What the packets of a stream say about its length, once all of them were read.
struct StreamLength {
    std::int64_t samples = 0; ///< to be heard: without those that a decoder starts up or ends with
    std::int64_t samplesInPackets = 0; ///< with those
    std::int64_t bytes = 0; ///< of all packets
    bool isExact = false; ///< else a guess: a packet does not tell its duration, or not in samples
};

/// Samples of a packet that are decoded and not heard.
struct SkippedSamples {
    std::uint32_t atStart = 0;
    std::uint32_t atEnd = 0;
};
[[nodiscard]] SkippedSamples skippedSamples(const AVPacket &packet);

/// How a QuickTime or MP4 file is opened: as its edit lists say, or all of the media, for those who read the edit lists
/// themselves.
enum class EditLists { Followed, Ignored };

/// An opened audio or movie file: its streams and packets. The file can be anything; it leads to no other file, to no
/// network and to no script. One thread at a time.
class MediaContainer
{
public:
    /// Opens and looks into the streams until their forms are known. Reads a bounded part of the file.
    [[nodiscard]] static Result<std::unique_ptr<MediaContainer>> open(const QByteArray &path, std::stop_token stop,
                                                                      EditLists editLists = EditLists::Followed);

    MediaContainer(const MediaContainer &) = delete;
    MediaContainer &operator=(const MediaContainer &) = delete;

    [[nodiscard]] AVFormatContext *context() const { return m_context.get(); }
    [[nodiscard]] const LocalMediaFile &file() const { return *m_file; }
    [[nodiscard]] const QByteArray &path() const { return m_file->path(); }
    /// The first of FFmpeg's names for the format, as in "mov" and "wav".
    [[nodiscard]] QByteArray formatName() const;

    /// The stream to listen to, or null: that which the file marks as the default one, else the first with most
    /// channels. Streams of no known codec count only when there are no others.
    [[nodiscard]] AVStream *bestAudioStream() const;
    [[nodiscard]] AVStream *bestVideoStream() const;

    /// Whether the header tells the length of the stream to the sample: sample tables that the whole file is described
    /// by, and codecs whose packets are as long as they say.
    [[nodiscard]] bool headerTellsLength(const AVStream &stream) const;

    /// What the file says of a stream, or of itself: names in lower case with texts, which are UTF-8 unless the file is
    /// wrong.
    [[nodiscard]] QMap<QByteArray, QByteArray> tags(const AVStream &stream) const;

    /// Only packets of this stream are read from now on.
    void readOnly(const AVStream &stream);

    /// The next packet; false at the end. Cancelling is an error. What the system fails to read is one, too, unlike
    /// what the container calls broken: that ends the packets, and `damage` says so.
    [[nodiscard]] Result<bool> readPacket(AVPacket &packet, QString *damage);

    /// Reads all packets of a stream without decoding them. Use a container of its own for that: the position moves.
    [[nodiscard]] Result<StreamLength> measure(AVStream &stream);

    /// Whether no sample of the codec is lost.
    [[nodiscard]] static bool isLossless(AVCodecID codec);
    /// Whether the format is nothing but one packet behind the other, so that a gap between two of them is foreign
    /// bytes.
    [[nodiscard]] bool hasOnlyPackets() const;

    /// Whether times of the stream are whole samples, so that they can be counted by.
    [[nodiscard]] static bool ticksAreSamples(const AVStream &stream);

private:
    MediaContainer(std::unique_ptr<LocalMediaFile> file, InputContext context);

    // In this order, so that the context is closed before the file that it reads.
    const std::unique_ptr<LocalMediaFile> m_file;
    const InputContext m_context;
};

} // namespace Tessaron
