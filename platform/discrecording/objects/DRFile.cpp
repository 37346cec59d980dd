#include "platform/discrecording/objects/DRFile.h"

#include "platform/discrecording/objects/DRFSObjectRare.h"
#include "platform/foundation/FileSystemRepresentation.h"

namespace Tessaron
{

// One object and its reference count for each file of a disc: a million files are 144 MB.
static_assert(sizeof(DRFile) <= 120);

DRFile::DRFile(ConstructionKey, const FSRef &source)
    : DRFSObject(source, false)
{
}

DRFile::DRFile(ConstructionKey, const QString &name)
    : DRFSObject(name)
{
}

DRFile::~DRFile() = default;

std::shared_ptr<DRFile> DRFile::fileWithPath(const QString &path)
{
    FSRef ref;
    bool isDirectory = false;
    const OSStatus status = FSPathMakeRefWithOptions(fileSystemRepresentation(path),
                                                     kFSPathMakeRefDoNotFollowLeafSymlink, &ref, &isDirectory);
    return status == noErr && !isDirectory ? DRFileCreateReal(&ref) : nullptr;
}

std::shared_ptr<DRFile> DRFile::virtualFileWithName(const QString &name, const QByteArray &contents)
{
    auto file = std::make_shared<DRFile>(ConstructionKey(), name);
    file->rare().contents = contents;
    return file;
}

std::shared_ptr<DRFile> DRFile::recordedFileWithName(const QString &name, const DRRecordedObject &recorded)
{
    auto file = std::make_shared<DRFile>(ConstructionKey(), name);
    file->rare().recorded = std::make_unique<const DRRecordedObject>(recorded);
    return file;
}

const DRRecordedObject *DRFile::recordedObject() const
{
    return isVirtual() && m_rare ? m_rare->recorded.get() : nullptr;
}

QByteArray DRFile::virtualContents() const
{
    return isVirtual() && m_rare ? m_rare->contents : QByteArray();
}

std::shared_ptr<DRFile> DRFileCreateReal(const FSRef *ref)
{
    if (!ref || *ref == FSRef())
        return nullptr;
    return std::make_shared<DRFile>(DRFile::ConstructionKey(), *ref);
}

} // namespace Tessaron
