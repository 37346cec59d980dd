#pragma once

#include "platform/disctracks/CDText.h"
#include "platform/disctracks/CdrdaoWords.h"
#include "platform/disctracks/CueSheet.h"
#include "platform/foundation/NSError.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace Tessaron
{

/// The texts of a .toc file: takes the blocks of CD_TEXT, of the disc and of its tracks, and makes CD-TEXT of them.
class CdrdaoTexts
{
public:
    /// What is passed over is put to the notes. Both outlive this.
    CdrdaoTexts(CdrdaoWordReader *words, std::vector<CueNote> *notes);

    /// Takes the words of a block, from its opening brace on. `place` is 0 for the disc, else the number of the track.
    [[nodiscard]] NSError take(std::size_t place);

    /// All texts that were taken, of a disc with `trackCount` tracks. A language that nothing tells is noted.
    [[nodiscard]] CDText cdText(std::size_t trackCount);

private:
    [[nodiscard]] NSError takeLanguageMap();
    void takeLanguageName(const CdrdaoWord &numberWord, const CdrdaoWord &name);
    [[nodiscard]] NSError takeLanguage(std::size_t place);
    [[nodiscard]] NSError skipBraces();

    CdrdaoWordReader &m_words;
    std::vector<CueNote> &m_notes;
    std::map<std::uint32_t, CDTextBlock> m_blocks; ///< by the number of the language
    std::map<std::uint32_t, std::uint8_t> m_languages; ///< their codes
};

} // namespace Tessaron
