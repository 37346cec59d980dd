#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>

#include <vector>

namespace Tessaron
{

/// Types of files by their names, as the shared MIME database's "globs2" files say: the glob of the highest weight
/// wins, then the longest. A look-up costs a few hash probes; asking QMimeDatabase costs about 40 µs, for it tries
/// every pattern anew.
///
/// Immutable once made, so that any thread may ask.
class MimeGlobs
{
public:
    /// The globs of the installed databases, read on first use.
    static const MimeGlobs &shared();

    MimeGlobs() = default;

    /// Adds the lines "weight:type:glob[:flags]" of a file. Files are added from the least important to the most; a
    /// later one may say of a type that earlier globs do not count. Lines that make no sense are left out.
    void addFile(const QByteArray &text);

    [[nodiscard]] bool isEmpty() const { return m_bySuffix.isEmpty() && m_byName.isEmpty(); }
    /// The type of a file name, empty when no glob matches.
    [[nodiscard]] QByteArray typeOfName(QByteArrayView name) const;

private:
    struct Glob {
        int weight = 0;
        bool isCaseSensitive = false;
        QByteArray type;
        QByteArray pattern;
    };
    using Globs = QHash<QByteArray, std::vector<Glob>>;

    /// The best glob so far, and whether it matches in its own case.
    struct Best {
        const Glob *glob = nullptr;
        bool isExact = false;

        void consider(const Glob &other, bool isOtherExact);
    };

    void add(Glob glob);
    void removeType(const QByteArray &type);
    static void consider(const Globs &globs, const QByteArray &key, QByteArrayView tail, Best &best);

    Globs m_bySuffix; ///< "*.tar.gz" under ".tar.gz", in lower case
    Globs m_byName; ///< whole names, in lower case
    std::vector<Glob> m_others; ///< with wildcards elsewhere
};

} // namespace Tessaron
