#pragma once

#include "filemodel/LayoutCreationMessages.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSThread.h"
#include <TessaronClasses/KRFileHierarchyItem.h>

#include <atomic>

namespace Tessaron
{

/// What an item needs while a layout creation runs on it, from start to last callback; it stays longer when something
/// could not be read, so that a program can ask for that. The main thread makes and ends it; the worker counts sizes
/// and reads the flags of its thread.
struct KRFileHierarchyItem::LayoutCreation {
    /// Main thread only. Shared, so that a callback may replace the target that it belongs to.
    std::shared_ptr<const KRFileHierarchyItemLayoutTarget> _tagetToNotifyForDRLayoutCreation;
    std::unique_ptr<NSThread> _drthread;
    bool _isCreatingDRLayout = false;
    /// Stays empty: what cannot be made is missing from the layout.
    std::vector<NSError> _errorsForDRLayoutCreation;
    double _drtotalSize = 0; ///< bytes, at least 0.01
    double _drcurrentSize = 0; ///< units of 1,048,576 bytes; written by the worker
    /// Set when the layout is not wanted any more; the worker looks at it at every node, unlike at a cancellation.
    std::atomic<bool> isAbandoned = false;
    std::shared_ptr<LayoutCreationMessages> messages;
    /// Written by the worker; the main thread's once that has ended.
    std::vector<UnreadableFolder> unreadableFolders;

    /// Ends the worker at the next node and waits for it.
    void abandon()
    {
        if (!_drthread)
            return;
        isAbandoned = true;
        _drthread->cancel();
        _drthread->waitUntilFinished();
    }
};

} // namespace Tessaron
