#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <optional>
#include <sys/types.h>
#include <vector>

namespace Tessaron
{

/// A file that is being made and has its final name only when it is whole. Until then it has no name at all where the
/// filesystem can do that (not even a killed process or a power failure leaves a trace then), else a hidden name
/// ".NAME.XXXXXX.part" in the destination folder. Destroying it before publishTogether() removes it; what a killed
/// process left of one, removeAbandoned() removes.
class StagedFile
{
public:
    enum class Naming : std::uint8_t {
        NamelessIfPossible,
        Hidden,
    };

    /// Makes the empty file in the folder, which must stay open while the file lives. Null with `*errnoValue` set when
    /// the system refuses.
    [[nodiscard]] static std::unique_ptr<StagedFile> create(int folder, const QByteArray &folderPath,
                                                            const QByteArray &finalName, int *errnoValue,
                                                            Naming naming = Naming::NamelessIfPossible);
    /// Removes the hidden files that killed processes left in the folder when they made a file of this name. Lists the
    /// whole folder: to be called once before a job's first file, and not for each of many.
    static void removeAbandoned(int folder, const QByteArray &finalName);
    ~StagedFile();
    StagedFile(const StagedFile &) = delete;
    StagedFile &operator=(const StagedFile &) = delete;

    /// A path under which the file can be opened for writing.
    [[nodiscard]] QByteArray pathForWriting() const;
    /// A descriptor open for reading and writing, owned by this object.
    [[nodiscard]] int descriptor() const { return m_file.get(); }
    [[nodiscard]] bool isNameless() const { return m_temporaryName.isEmpty(); }
    [[nodiscard]] const QByteArray &finalName() const { return m_finalName; }

private:
    friend class Publisher;
    friend int publishUnlessTaken(StagedFile &file, const QByteArray &name, std::optional<mode_t> mode);

    StagedFile(int folder, const QByteArray &folderPath, const QByteArray &finalName);
    bool createNameless();
    bool createHidden();
    bool hideFromOthers();
    bool giveTemporaryName();
    void setTemporaryName(const QByteArray &name);
    void removeTemporaryName();
    void forgetTemporaryName();

    const int m_folder;
    const QByteArray m_folderPath;
    const QByteArray m_finalName;
    QByteArray m_temporaryName;
    int m_emergencyNumber = -1;
    mode_t m_finalMode = 0;
    UniqueDescriptor m_file;
};

/// Gives all files their final names, replacing older ones, with the permissions of those or else those that the
/// process's umask asks for: either all of them or, as far as the filesystem can exchange two names, none. 0 or an
/// `errno` value; the files stay staged then. Several files must lie in one folder.
[[nodiscard]] int publishTogether(const std::vector<StagedFile *> &files);

/// Gives the file this name in its folder instead of the final one, unless there is something of that name: EEXIST
/// then. Of `mode` it gets the permissions that the process's umask leaves, but the user may always read and write;
/// without one, those that the umask asks for. 0 or an `errno` value; the file stays staged then.
[[nodiscard]] int publishUnlessTaken(StagedFile &file, const QByteArray &name, std::optional<mode_t> mode);

} // namespace Tessaron
