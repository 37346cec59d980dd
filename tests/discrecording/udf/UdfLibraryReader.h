#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <map>

namespace Tessaron::Testing
{

/// What libudfread finds at a path.
struct LibraryObject {
    bool isFolder = false;
    std::int64_t size = 0;
    QByteArray digest; ///< SHA-1 of a file's contents
};

/// Everything that libudfread lists and reads in an image, by path from the root.
struct LibraryVolume {
    QString name;
    std::map<QByteArray, LibraryObject> objects;
    bool isReadable = false; ///< no call failed
};
[[nodiscard]] LibraryVolume readWithLibrary(const QString &imagePath);

} // namespace Tessaron::Testing
