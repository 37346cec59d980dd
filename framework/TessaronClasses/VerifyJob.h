#pragma once

#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/ImageVerification.h>

#include <QByteArray>
#include <QList>

#include <memory>
#include <optional>

namespace Tessaron
{

class KRFileHierarchyItem;

/// What is to be compared. Paths are bytes; relative ones count from the working folder.
struct VerifyOrder {
    QByteArray image; ///< see openDiscImage()
    QList<QByteArray> sources; ///< as in DiscImageOrder
    /// The filesystems that the image must have, no more and no fewer; absent to take it as it is.
    std::optional<DiscFilesystems> filesystems;
    /// In place of `sources`, as in DiscImageOrder: nothing else may use it from start() on.
    std::shared_ptr<KRFileHierarchyItem> tree = {};
};

/// Compares an image with the sources that it was made of: verifyImage() in the background. See DiscJob for threads and
/// lifetime.
class TESSARON_EXPORT VerifyJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit VerifyJob(VerifyOrder order, QObject *parent = nullptr);
    ~VerifyJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const VerificationResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::VerificationResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::VerificationResult)
