#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include "tests/tools/ImageFixture.h"

#include <QJsonObject>

#include <functional>
#include <set>
#include <string>
#include <sys/types.h>

namespace Tessaron::Testing
{

/// Images held against the sources that they were made of by `tessaron verify`, after one of the two was changed.
class VerifyFixture : public ImageTest
{
protected:
    using Words = std::set<std::string>;

    /// What filesystemsIn() gives when all views differ.
    inline static const Words allViews = {"iso9660", "rockridge", "joliet", "udf", "hfs+"};

    void makeImage(const QList<QByteArray> &options = {});

    /// The report of a verification that has to end with the status.
    [[nodiscard]] QJsonObject verified(int expectedStatus) const;
    /// "kind path" of each difference.
    [[nodiscard]] static Words differencesIn(const QJsonObject &report);
    /// The filesystems that any difference names.
    [[nodiscard]] static Words filesystemsIn(const QJsonObject &report);

    /// The object of this path as one view of the image has it.
    [[nodiscard]] VolumeObject objectIn(VolumeKind kind, const QByteArray &path) const;
    /// Changes bits of one byte of the image.
    void flip(off_t offset, unsigned int bits = 1) const;
    [[nodiscard]] off_t imageLength() const;

    /// Makes a change that leaves the times of what is at the path as they are.
    static void keepTimes(const QByteArray &path, const std::function<void()> &change);
};

} // namespace Tessaron::Testing
