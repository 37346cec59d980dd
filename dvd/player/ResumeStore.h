#pragma once

#include <QByteArray>
#include <QString>

namespace Tessaron
{

/// Where discs were left, a small file for each in a folder of the user's state (XDG_STATE_HOME, else ~/.local/state):
/// "tessaron/dvd/" and the disc's identity in hexadecimal digits. What cannot be read counts as not there. One thread.
class ResumeStore
{
public:
    ResumeStore();
    /// With a folder of one's own.
    explicit ResumeStore(QString folder);

    /// The bookmark of a disc; empty without one.
    [[nodiscard]] QByteArray bookmarkOf(const QByteArray &identity) const;
    /// Replaces it as a whole; false when that failed. The folder is made, for its owner only.
    [[nodiscard]] bool keep(const QByteArray &identity, const QByteArray &bookmark) const;
    void forget(const QByteArray &identity) const;

    [[nodiscard]] QString pathOf(const QByteArray &identity) const;

private:
    const QString m_folder; ///< ends in a slash
};

} // namespace Tessaron
