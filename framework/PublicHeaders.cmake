# The platform's headers that a program may include, besides all of framework/TessaronClasses. Everything that a public
# header includes is in this list; a test compiles each header alone against the installed package.
set(TESSARON_PUBLIC_HEADERS
    platform/coreservices/FSCatalog.h
    platform/coreservices/FSRef.h
    platform/discrecording/DRBurn.h
    platform/discrecording/DRCallbackDevice.h
    platform/discrecording/DRFSObject.h
    platform/discrecording/DRFile.h
    platform/discrecording/DRFilesystems.h
    platform/discrecording/DRFolder.h
    platform/discrecording/DRMSF.h
    platform/discrecording/DRNotificationCenter.h
    platform/discrecording/DRStorageReport.h
    platform/discrecording/DRTrack.h
    platform/discrecording/DRTrackProducer.h
    platform/foundation/Export.h
    platform/foundation/FileSystemRepresentation.h
    platform/foundation/MainThread.h
    platform/foundation/NSBundle.h
    platform/foundation/NSError.h
    platform/foundation/NSFileHandle.h
    platform/foundation/NSScanner.h
    platform/foundation/NSThread.h
    platform/foundation/OSStatus.h
    platform/foundation/UniqueDescriptor.h)
