#pragma once

#include "platform/coreservices/FSCatalog.h"
#include "platform/foundation/Export.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

/// An open listing of one folder; see FSGetCatalogInfoBulk().
class DirectoryListing
{
public:
    DirectoryListing() = default;
    virtual ~DirectoryListing() = default;
    DirectoryListing(const DirectoryListing &) = delete;
    DirectoryListing &operator=(const DirectoryListing &) = delete;

    [[nodiscard]] virtual OSStatus next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo,
                                        FSBulkEntry *entries) = 0;
    /// Why the last next() failed.
    [[nodiscard]] virtual int errnoValue() const = 0;
    /// Gives back scarce resources such as a descriptor: the walk goes deep below this folder and comes back later.
    virtual void rest() = 0;
};

/// Where a scanner gets its listings from: the file system, or a test that makes one fail.
class DirectoryLister
{
public:
    DirectoryLister() = default;
    virtual ~DirectoryLister() = default;
    DirectoryLister(const DirectoryLister &) = delete;
    DirectoryLister &operator=(const DirectoryLister &) = delete;

    /// Opens a folder; null with `*errnoValue` set when that fails. `parent` is the open listing of the folder that
    /// holds it, or null.
    [[nodiscard]] virtual std::unique_ptr<DirectoryListing> open(const FSRef &folder, DirectoryListing *parent,
                                                                 int *errnoValue) = 0;

    /// These folders, in this order, are likely to be opened soon. A hint.
    virtual void willOpen(const std::vector<FSRef> &) { }
    /// Descriptors have run out: those held for folders to come are closed, and no more are opened for these.
    virtual void giveBackDescriptors() { }
    /// The scan is over: all that was prepared for it is dropped.
    virtual void endScan() { }

    /// A lister of the file system for one scan at a time. It reads ahead on a thread of its own.
    [[nodiscard]] static TESSARON_EXPORT std::shared_ptr<DirectoryLister> fileSystem();
};

} // namespace Tessaron
