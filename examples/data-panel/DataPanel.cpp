#include "DataPanel.h"

#include <TessaronClasses/KRFileReference.h>

#include <platform/discrecording/objects/DRFile.h>
#include <platform/discrecording/objects/DRFolder.h>
#include <platform/discrecording/objects/DRTrack.h>
#include <platform/foundation/NSError.h>

using namespace Tessaron;

DataPanel::DataPanel(std::shared_ptr<KRFileHierarchyItem> root, bool isAsync)
    : m_root(std::move(root))
    , m_isAsync(isAsync)
{
}

std::uint64_t DataPanel::bestSizeApproximation()
{
    return m_root->contentsPhysicalSize();
}

TessaronDiscImageFormat DataPanel::handledDiscImageFormats()
{
    return TessaronDiscImageFormatISO | TessaronDiscImageFormatBIN | TessaronDiscImageFormatVANT;
}

QString DataPanel::emptyDiscInformationMessage()
{
    return QStringLiteral("Add files before you make a disc.");
}

bool DataPanel::createLayoutAsyncAndNotifyLayoutCreationManager(
    const std::weak_ptr<TessaronLayoutCreationManager> &manager)
{
    m_manager = manager;
    return m_root->createDRLayoutAsyncNotifyProgressToTarget(target());
}

bool DataPanel::cancelLayoutCreationAsync()
{
    return m_root->cancelDRLayoutCreationNotifyTarget(target());
}

KRFileHierarchyItemLayoutTarget DataPanel::target()
{
    KRFileHierarchyItemLayoutTarget target;
    target.context = CallbackContext(m_life);
    target.KRFileHierarchyItemDRLayoutCreationProgress = [this](KRFileHierarchyItem &, float progress) {
        if (const auto manager = m_manager.lock())
            manager->TessaronPanelLayoutCreationProgress(*this, progress);
    };
    target.KRFileHierarchyItemDRLayoutCreationFinished = [this](KRFileHierarchyItem &,
                                                                const std::shared_ptr<DRFSObject> &root) {
        if (const auto manager = m_manager.lock())
            manager->TessaronPanelLayoutIsCreated(
                *this, DRTrack::trackForRootFolder(std::dynamic_pointer_cast<DRFolder>(root)));
    };
    target.KRFileHierarchyItemDRLayoutCreationDidCancel = [this](KRFileHierarchyItem &) {
        if (const auto manager = m_manager.lock())
            manager->TessaronPanelLayoutCreationCancel(*this);
    };
    return target;
}

/// A quick layout: the folders on disk are taken wholesale, as they will be when the disc is made.
DRLayout DataPanel::createLayoutSync(NSError *error)
{
    const auto root = DRFolder::virtualFolderWithName(m_root->fileReference()->name());
    for (const std::shared_ptr<KRFileHierarchyItem> &item : m_root->items()) {
        KRFileReference &reference = *item->fileReference();
        std::shared_ptr<DRFSObject> object;
        if (reference.isContainer())
            object = DRFolderCreateReal(reference.fileRef());
        else
            object = DRFileCreateReal(reference.fileRef());
        if (!object) {
            *error = NSError(NSOSStatusErrorDomain, fnfErr, {{NSFilePathErrorKey, reference.path()}});
            return {};
        }
        root->addChild(object);
    }
    return DRTrack::trackForRootFolder(root);
}
