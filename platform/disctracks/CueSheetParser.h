#pragma once

#include "platform/disctracks/CueSheetReader.h"

#include <QList>
#include <QStringList>

#include <map>
#include <optional>
#include <vector>

namespace Tessaron
{

struct CueLine;

/// An INDEX line.
struct CueIndex {
    unsigned int number = 0;
    std::size_t file = 0;
    std::uint64_t frame = 0; ///< from the start of the file
    std::uint32_t line = 0;
};

/// A track as the lines say it.
struct SpokenTrack {
    DiscTrack track;
    std::uint32_t line = 0;
    std::size_t session = 0;
    std::optional<std::uint64_t> pregap;
    std::vector<CueIndex> indexes;
};

/// Reads a cue sheet line after line: what the lines say, before it is known where the blocks lie.
class CueSheetParser
{
public:
    /// `bytes` is the sheet before it was decoded, for names that are not UTF-8; empty for UTF-16.
    CueSheetParser(CueSheet *sheet, const CueSheetFiles &files, const QByteArray &bytes);

    /// Takes all lines; puts files, catalogue number, CD-TEXT and notes into the sheet. An error names its line.
    [[nodiscard]] NSError parse(const QString &text);

    [[nodiscard]] std::vector<SpokenTrack> &tracks() { return m_tracks; }
    /// The line of each FILE.
    [[nodiscard]] const std::vector<std::uint32_t> &fileLines() const { return m_fileLines; }

    /// Puts the texts of the disc and its tracks into the sheet, unless a CDTEXTFILE did.
    void putTexts();

private:
    using Handler = NSError (CueSheetParser::*)(const CueLine &);

    void note(const CueLine &line, const QString &text);
    [[nodiscard]] NSError take(const CueLine &line);

    /// The track that a line is about; null before the first one.
    [[nodiscard]] SpokenTrack *current() { return m_tracks.empty() ? nullptr : &m_tracks.back(); }

    [[nodiscard]] static NSError needsTrack(const CueLine &line);
    [[nodiscard]] NSError takeFile(const CueLine &line);
    [[nodiscard]] NSError takeTrack(const CueLine &line);
    [[nodiscard]] NSError takeIndex(const CueLine &line);
    [[nodiscard]] NSError takeGap(const CueLine &line);
    [[nodiscard]] static Result<std::uint64_t> framesOf(const CueLine &line, const QString &word);
    [[nodiscard]] NSError takeFlags(const CueLine &line);
    [[nodiscard]] NSError takeIsrc(const CueLine &line);
    [[nodiscard]] NSError takeCatalog(const CueLine &line);
    [[nodiscard]] NSError takeCDTextFile(const CueLine &line);
    [[nodiscard]] NSError takeRemark(const CueLine &line);

    /// Whether the current track has the index that it needs.
    [[nodiscard]] NSError checkIndexes();

    /// The name of a FILE line as its bytes stand in the sheet.
    [[nodiscard]] QByteArray bytesOfLineName(const CueLine &line) const;

    CueSheet &m_sheet;
    const CueSheetFiles &m_files;
    QList<QByteArray> m_byteLines;
    std::vector<SpokenTrack> m_tracks;
    std::vector<std::uint32_t> m_fileLines;
    std::map<CDTextKind, std::vector<QString>> m_texts;
    std::size_t m_session = 0;
};

} // namespace Tessaron
