#pragma once

#include "tests/fakedrive/FakeDisc.h"
#include "tests/fakedrive/FakeDriveAnswers.h"

#include <optional>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

struct Sense {
    int key = 0;
    int code = 0;
    int qualifier = 0;
};

/// The drive and the disc in it. A file "hold-XX" in its folder makes it wait with the command of that opcode, until
/// the file is gone; "held-XX" is there once it waits.
class FakeDrive
{
public:
    explicit FakeDrive(std::string folder);

    [[nodiscard]] bool isGone() const { return m_isGone; }
    [[nodiscard]] bool isTrayOut() const { return m_disc.isTrayOut; }
    [[nodiscard]] bool hasDisc() const { return m_disc.profile != FakeProfile::None && !m_disc.isTrayOut; }
    void save() const { m_disc.save(m_folder); }

    /// Carries a command out; no value when the drive is gone.
    [[nodiscard]] std::optional<Sense> run(const std::uint8_t *command, std::uint8_t *data, unsigned int length,
                                           bool isToDrive);

private:
    void waitWhileHeld(int opcode) const;
    [[nodiscard]] std::optional<Sense> faultOf(int opcode);
    [[nodiscard]] Sense carryOut(const std::uint8_t *command, std::uint8_t *data, unsigned int length);
    [[nodiscard]] Sense write(const std::uint8_t *data, int first, int count, unsigned int length);
    [[nodiscard]] Sense read(Bytes *reply, int first, int count, int size);
    [[nodiscard]] Sense closeTrackOrSession(int function);
    [[nodiscard]] Sense blank(int type);
    void beginTrack(int first);
    void noteCueSheet(const Bytes &sheet);
    void noteTexts(const std::uint8_t *data, unsigned int length);
    void endAnnouncedSession();
    void endSession(bool mayGoOn);
    void endTrack();
    [[nodiscard]] bool staysOpen() const;
    void noteTray(const char *told);
    [[nodiscard]] Sense moveTray(int operation);

    const std::string m_folder;
    FakeDisc m_disc;
    const int m_sectors;
    bool m_isGone = false;
    bool m_isLocked = false; ///< the tray
    Bytes m_writeParameters; ///< mode page 05 as it was set
    const FakeDriveAnswers m_answers{m_disc, m_writeParameters};
    std::vector<FakeTrack> m_announced; ///< by a cue sheet
    bool m_areTextsWhole = false; ///< of the lead-in, which repeats them to its end
    int m_written = 0; ///< behind the last block that was written
    int m_counts[256] = {};
};

} // namespace Tessaron::Testing
