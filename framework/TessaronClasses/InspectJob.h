#pragma once

#include "platform/discimage/ImageCheck.h"
#include "platform/discimage/iso9660/ElTorito.h"
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/OpenedDiscImage.h>
#include <TessaronClasses/VolumeCensus.h>

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Tessaron
{

/// What an image holds.
struct ImageInspection {
    NSError error; ///< null when the image was walked to its end; domain and codes are those of DiscJobErrors.h
    std::shared_ptr<const OpenedDiscImage> image; ///< null when it cannot be opened
    std::vector<VolumeCensus> censuses; ///< one for each volume of the image, in the same order
    std::vector<std::vector<VolumeCensus>> partCensuses; ///< the same for each of the image's parts
    std::vector<VolumeProblem> problems; ///< the first hundred that checkDiscImage() told of the image and its parts
    std::uint64_t problemCount = 0; ///< all that it told
    std::uint64_t unsupportedCount = 0; ///< of these, those that are not damage
    std::optional<BootCatalog> bootCatalog; ///< of El Torito; absent when the image does not boot
};

/// Finds out which filesystems an image has, walks them all, and counts what is in them. See DiscJob for threads and
/// lifetime.
class TESSARON_EXPORT InspectJob final : public DiscJob
{
    Q_OBJECT

public:
    /// Of the image at the path, see openDiscImage().
    explicit InspectJob(QByteArray path, QObject *parent = nullptr);
    ~InspectJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const ImageInspection &result() const;

Q_SIGNALS:
    void finished(const Tessaron::ImageInspection &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::ImageInspection)
