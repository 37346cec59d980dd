#pragma once

#include "platform/quicktime/QTMovie.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>

namespace Tessaron
{

/// A part of the sound of an audio file or a movie in a temporary movie of its own, which an audio track can be made
/// of. The temporary files are the user's alone; they go with this object, or else with the process.
class MovieExcerpt
{
public:
    /// Opens the source, under the name "tempWavFile.wav" when its own ends in ".bin": media services go by names, and
    /// such files are sound. Null when it cannot be opened.
    [[nodiscard]] static std::unique_ptr<MovieExcerpt> ofFile(const QString &source);
    ~MovieExcerpt();
    MovieExcerpt(const MovieExcerpt &) = delete;
    MovieExcerpt &operator=(const MovieExcerpt &) = delete;

    /// Of the source; the scale is not 0.
    [[nodiscard]] QTTime duration() const { return m_source->duration(); }
    /// Writes the part that begins at `start` and is `length` long, in the source's time scale, into the movie with
    /// this name. False when it cannot be written, or does not lie in the source. Called once.
    [[nodiscard]] bool write(std::int64_t start, std::int64_t length, const QByteArray &name);
    /// Of the temporary movie; null until it is written.
    [[nodiscard]] QString path() const { return m_path; }

private:
    MovieExcerpt() = default;
    [[nodiscard]] bool makeFolder();
    [[nodiscard]] QByteArray linkTo(const QByteArray &source);
    [[nodiscard]] QByteArray pathOf(const QByteArray &name) const { return m_folder + '/' + name; }

    QByteArray m_folder; ///< empty until it is made
    std::shared_ptr<QTMovie> m_source;
    QString m_path;
};

} // namespace Tessaron
