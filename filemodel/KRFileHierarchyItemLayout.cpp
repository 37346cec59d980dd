#include "filemodel/LayoutBuilder.h"
#include "filemodel/LayoutCreation.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/WhenThereIsMemory.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

namespace Tessaron
{

bool KRFileHierarchyItem::createDRLayoutAsyncNotifyProgressToTarget(const KRFileHierarchyItemLayoutTarget &target)
{
    if (isCreatingLayout() || !target.KRFileHierarchyItemDRLayoutCreationProgress
        || !target.KRFileHierarchyItemDRLayoutCreationFinished || !target.context.isAlive())
        return false;
    const std::weak_ptr<KRFileHierarchyItem> weakThis = weak_from_this();
    m_creation = std::make_unique<LayoutCreation>();
    m_creation->_tagetToNotifyForDRLayoutCreation = std::make_shared<const KRFileHierarchyItemLayoutTarget>(target);
    m_creation->_isCreatingDRLayout = true;
    m_creation->unreadableFolders.reserve(1);
    m_creation->_drtotalSize = std::max(static_cast<double>(contentsPhysicalSize()), 0.01);
    m_creation->messages = std::make_shared<LayoutCreationMessages>(LayoutCreationMessages::Receiver{
        .isAlive = [weakThis] { return weakThis.lock(); },
        .progress = [this](float progress) { _notifyTargetOfProgress(progress); },
    });
    m_creation->_drthread = std::make_unique<NSThread>([this] { _beginLayoutCreationOnThread(); });
    try {
        m_creation->_drthread->start();
    } catch (const std::system_error &) {
        m_creation.reset(); // the system has no thread to give
        return false;
    }
    return true;
}

bool KRFileHierarchyItem::isCreatingLayout() const
{
    return m_creation && m_creation->_isCreatingDRLayout;
}

std::vector<UnreadableFolder> KRFileHierarchyItem::unreadableFolders() const
{
    return m_creation && !isCreatingLayout() ? m_creation->unreadableFolders : std::vector<UnreadableFolder>();
}

bool KRFileHierarchyItem::cancelDRLayoutCreationNotifyTarget(const KRFileHierarchyItemLayoutTarget &target)
{
    if (!isCreatingLayout())
        return false;
    m_creation->_tagetToNotifyForDRLayoutCreation = std::make_shared<const KRFileHierarchyItemLayoutTarget>(target);
    m_creation->_drthread->cancel();
    return true;
}

void KRFileHierarchyItem::_beginLayoutCreationOnThread()
{
    LayoutCreation &creation = *m_creation;
    std::shared_ptr<DRFSObject> root;
    try {
        root = _createDRLayoutForItem(nullptr, nullptr, *this);
    } catch (const std::bad_alloc &) {
        // Room for one was made at the start.
        const FSRef ref = m_fileReference ? *m_fileReference->fileRef() : FSRef();
        creation.unreadableFolders.resize(1);
        creation.unreadableFolders.front() = {lastKnownPath(ref), ENOMEM};
    }
    const bool isCancelled = creation._drthread->isCancelled();
    whenThereIsMemory([&] {
        if (isCancelled)
            creation.messages->postEnd([this] { _notifyTargetWeCanceled(); });
        else
            creation.messages->postEnd([this, root] { _notifyTargetWeAreFinished(root); });
    });
}

std::shared_ptr<DRFSObject> KRFileHierarchyItem::_createDRLayoutForItem(KRFileHierarchyItem *item,
                                                                        DRFolder *addToFolder,
                                                                        KRFileHierarchyItem &masterOfAll)
{
    LayoutCreation &creation = *masterOfAll.m_creation;
    const LayoutBuilder builder({
        .isCancelled =
            [&](const KRFileHierarchyItem &node) { return &node == &masterOfAll && creation._drthread->isCancelled(); },
        .isAbandoned = [&] { return creation.isAbandoned.load(); },
        .willAddFile = [&](double amount) { masterOfAll._increaseCurrentDRSizeBy(amount); },
        .noteUnreadable =
            [&](const FSRef &folder, int errnoValue) {
                creation.unreadableFolders.push_back({lastKnownPath(folder), errnoValue});
            },
        .didAddFile = [&] { creation.messages->postProgress(masterOfAll._drprogressPercent()); },
    });
    return item ? builder.build(*item, addToFolder) : builder.build(*this, nullptr);
}

void KRFileHierarchyItem::_increaseCurrentDRSizeBy(double amount)
{
    m_creation->_drcurrentSize += amount;
}

float KRFileHierarchyItem::_drprogressPercent() const
{
    return std::min(static_cast<float>(m_creation->_drcurrentSize / m_creation->_drtotalSize), 1.0f);
}

void KRFileHierarchyItem::_notifyTargetOfProgress(float progress)
{
    const auto target = m_creation->_tagetToNotifyForDRLayoutCreation;
    if (target->context.isAlive() && target->KRFileHierarchyItemDRLayoutCreationProgress)
        target->KRFileHierarchyItemDRLayoutCreationProgress(*this, progress);
}

void KRFileHierarchyItem::_notifyTargetWeAreFinished(const std::shared_ptr<DRFSObject> &root)
{
    const auto target = endLayoutCreation();
    if (target->context.isAlive() && target->KRFileHierarchyItemDRLayoutCreationFinished)
        target->KRFileHierarchyItemDRLayoutCreationFinished(*this, root);
}

void KRFileHierarchyItem::_notifyTargetWeCanceled()
{
    const auto target = endLayoutCreation();
    if (target->context.isAlive() && target->KRFileHierarchyItemDRLayoutCreationDidCancel)
        target->KRFileHierarchyItemDRLayoutCreationDidCancel(*this);
}

std::shared_ptr<const KRFileHierarchyItemLayoutTarget> KRFileHierarchyItem::endLayoutCreation()
{
    m_creation->_drthread->waitUntilFinished();
    // Only now, so that the next creation can be started from the callback.
    m_creation->_isCreatingDRLayout = false;
    m_creation->_drthread.reset();
    m_creation->messages.reset();
    auto target = std::exchange(m_creation->_tagetToNotifyForDRLayoutCreation, nullptr);
    if (m_creation->unreadableFolders.empty())
        m_creation.reset();
    return target;
}

} // namespace Tessaron
