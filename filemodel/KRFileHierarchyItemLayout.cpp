#include "filemodel/LayoutBuilder.h"
#include "filemodel/LayoutCreation.h"
#include "platform/discrecording/objects/DRFolder.h"
#include <TessaronClasses/KRFileHierarchyItem.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace Tessaron
{

bool KRFileHierarchyItem::createDRLayoutAsyncNotifyProgressToTarget(const KRFileHierarchyItemLayoutTarget &target)
{
    if (m_creation || !target.KRFileHierarchyItemDRLayoutCreationProgress
        || !target.KRFileHierarchyItemDRLayoutCreationFinished)
        return false;
    const std::weak_ptr<KRFileHierarchyItem> weakThis = weak_from_this();
    m_creation = std::make_unique<LayoutCreation>();
    m_creation->_tagetToNotifyForDRLayoutCreation = std::make_shared<const KRFileHierarchyItemLayoutTarget>(target);
    m_creation->_isCreatingDRLayout = true;
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

bool KRFileHierarchyItem::cancelDRLayoutCreationNotifyTarget(const KRFileHierarchyItemLayoutTarget &target)
{
    if (!m_creation)
        return false;
    m_creation->_tagetToNotifyForDRLayoutCreation = std::make_shared<const KRFileHierarchyItemLayoutTarget>(target);
    m_creation->_drthread->cancel();
    return true;
}

void KRFileHierarchyItem::_beginLayoutCreationOnThread()
{
    LayoutCreation &creation = *m_creation;
    std::shared_ptr<DRFolder> folder =
        std::dynamic_pointer_cast<DRFolder>(_createDRLayoutForItem(nullptr, nullptr, *this));
    if (creation._drthread->isCancelled()) {
        creation.messages->postEnd([this] { _notifyTargetWeCanceled(); });
    } else {
        creation.messages->postEnd([this, folder = std::move(folder)] { _notifyTargetWeAreFinished(folder); });
    }
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

void KRFileHierarchyItem::_notifyTargetWeAreFinished(const std::shared_ptr<DRFolder> &folder)
{
    const auto target = endLayoutCreation();
    if (target->context.isAlive() && target->KRFileHierarchyItemDRLayoutCreationFinished)
        target->KRFileHierarchyItemDRLayoutCreationFinished(*this, folder);
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
    return std::exchange(m_creation, nullptr)->_tagetToNotifyForDRLayoutCreation;
}

} // namespace Tessaron
