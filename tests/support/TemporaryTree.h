#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace Tessaron::Testing
{

/// A temporary folder in which a test makes real files; removed with all it holds at the end. Names and paths are
/// bytes, relative to the folder, and may be anything that the file system takes. Each operation fails the running test
/// when the system refuses it.
class TemporaryTree
{
public:
    TemporaryTree();
    /// In another folder than the default one, for example "/dev/shm" for a memory filesystem.
    explicit TemporaryTree(const QString &parentFolder);
    ~TemporaryTree();

    [[nodiscard]] QByteArray path(const QByteArray &relative = {}) const;
    [[nodiscard]] QString pathText(const QByteArray &relative = {}) const;

    /// Makes the folders on the way, too.
    QByteArray makeFolder(const QByteArray &relative) const;
    QByteArray makeFile(const QByteArray &relative, const QByteArray &contents = {}) const;
    QByteArray makeSymbolicLink(const QByteArray &relative, const QByteArray &target) const;
    QByteArray makeHardLink(const QByteArray &relative, const QByteArray &existing) const;
    QByteArray makeFifo(const QByteArray &relative) const;
    /// A file of the given length that occupies no space.
    QByteArray makeSparseFile(const QByteArray &relative, qint64 size) const;
    void setModificationTime(const QByteArray &relative, qint64 secondsSinceEpoch) const;
    void setMode(const QByteArray &relative, unsigned int mode) const;
    void setExtendedAttribute(const QByteArray &relative, const QByteArray &name, const QByteArray &value) const;
    [[nodiscard]] QByteArray contents(const QByteArray &relative) const;
    [[nodiscard]] bool exists(const QByteArray &relative) const;
    /// Removes a file or an empty folder, once nothing made from now on can have its birth time; see
    /// letBirthTimesPass().
    void remove(const QByteArray &relative) const;

    /// Waits until what is made from now on has other birth times than all that exists. File systems give a freed inode
    /// to the next file, in any test that runs beside this one, and take the time of birth from a clock with ticks of
    /// some milliseconds: without the wait the newcomer could be taken for the removed file.
    static void letBirthTimesPass();

private:
    void makeParents(const QByteArray &relative) const;

    QTemporaryDir m_folder;
};

/// Gives up root's rights over files while it lives, so that permissions mean something in tests; does nothing for a
/// normal user.
class WithoutRootRights
{
public:
    WithoutRootRights();
    ~WithoutRootRights();
    WithoutRootRights(const WithoutRootRights &) = delete;
    WithoutRootRights &operator=(const WithoutRootRights &) = delete;

private:
    bool m_wasRoot = false;
};

} // namespace Tessaron::Testing
