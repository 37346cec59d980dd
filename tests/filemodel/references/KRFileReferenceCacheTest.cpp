#include "platform/coreservices/IconFamily.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/PathHelpers.h>

#include <QImage>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

using namespace std::chrono_literals;

/// Files that are renamed or removed behind the back of a reference, so that what it says shows what it has cached.
class KRFileReferenceCache : public ::testing::Test
{
protected:
    void SetUp() override
    {
        tree.makeFile("old.txt", QByteArray(5000, 'x'));
        reference = KRFileReference::initWithFSRef(fsRef(tree.pathText("old.txt")));
    }

    void renameFile() const
    {
        ASSERT_EQ(std::rename(tree.path("old.txt").constData(), tree.path("new.html").constData()), 0);
    }

    const Testing::TemporaryTree tree;
    std::shared_ptr<KRFileReference> reference;
};

_ZelFileAttribute known()
{
    _ZelFileAttribute record = ZelFileAttributeNone_fct();
    record.empty = 0;
    return record;
}

} // namespace

TEST_F(KRFileReferenceCache, texts_stayAsTheyWereRead)
{
    EXPECT_EQ(reference->displayName(), QStringLiteral("old.txt"));
    EXPECT_EQ(reference->name(), QStringLiteral("old.txt"));
    const QString kind = reference->displayKind();
    renameFile();
    EXPECT_EQ(reference->displayName(), QStringLiteral("old.txt"));
    EXPECT_EQ(reference->name(), QStringLiteral("old.txt"));
    EXPECT_EQ(reference->path(), tree.pathText("old.txt"));
    EXPECT_EQ(reference->extension(), QStringLiteral("txt"));
    EXPECT_EQ(reference->displayKind(), kind);
    EXPECT_NE(reference->kind(), kind);
}

TEST_F(KRFileReferenceCache, path_isMadeAnew_whileNothingElseIsKnown)
{
    EXPECT_EQ(reference->path(), tree.pathText("old.txt"));
    renameFile();
    EXPECT_EQ(reference->path(), tree.pathText("new.html"));
}

TEST_F(KRFileReferenceCache, resetAllGettableAttributes_dropsTexts_andKeepsFlagsSizesAndTheLargeIcon)
{
    EXPECT_EQ(reference->displayName(), QStringLiteral("old.txt"));
    EXPECT_EQ(reference->path(), tree.pathText("old.txt"));
    const std::uint64_t size = reference->dataPhysicalSize();
    const QImage large = reference->largeIcon();
    renameFile();
    reference->resetAllGettableAttributes();
    EXPECT_EQ(reference->displayName(), QStringLiteral("new.html"));
    EXPECT_EQ(reference->extension(), QStringLiteral("html"));
    EXPECT_EQ(reference->path(), tree.pathText("new.html"));
    reference->resetAllGettableAttributes();
    tree.remove("new.html");
    EXPECT_EQ(reference->dataPhysicalSize(), size);
    EXPECT_FALSE(reference->isContainer());
    EXPECT_EQ(reference->largeIcon(), large);
    EXPECT_TRUE(reference->smallIcon().isNull());
}

TEST_F(KRFileReferenceCache, resetAllAttributes_dropsEverything)
{
    (void)reference->displayName();
    EXPECT_GT(reference->dataPhysicalSize(), 0u);
    EXPECT_FALSE(reference->largeIcon().isNull());
    tree.remove("old.txt");
    reference->resetAllAttributes();
    EXPECT_EQ(reference->dataPhysicalSize(), 0u);
    EXPECT_TRUE(reference->displayName().isNull());
    EXPECT_TRUE(reference->largeIcon().isNull());
}

TEST_F(KRFileReferenceCache, knownAttributes_areBelieved)
{
    _ZelFileAttribute record = known();
    record.directory = 0;
    record.invisible = 0;
    record.bundle = 1;
    record.name = mallocCopy("given name");
    record.displayName = mallocCopy("given display name");
    record.extension = mallocCopy("given");
    record.displayKind = mallocCopy("given kind");
    record.path = mallocCopy("/given/path");
    const auto made = KRFileReference::initWithFSRef(*reference->fileRef(), std::move(record));
    EXPECT_TRUE(made->isContainer());
    EXPECT_TRUE(made->isInvisible());
    EXPECT_FALSE(made->isBundle());
    EXPECT_EQ(made->name(), QStringLiteral("given name"));
    EXPECT_EQ(made->displayName(), QStringLiteral("given display name"));
    EXPECT_EQ(made->extension(), QStringLiteral("given"));
    EXPECT_EQ(made->displayKind(), QStringLiteral("given kind"));
    EXPECT_EQ(made->path(), QStringLiteral("/given/path"));
    EXPECT_EQ(made->physicalSize(), 0u);
}

TEST_F(KRFileReferenceCache, knownAttributes_areIgnored_whileTheRecordIsEmpty)
{
    _ZelFileAttribute record = ZelFileAttributeNone_fct();
    record.directory = 0;
    record.dataSizeIsKnown = 0;
    record.dataSize = 1;
    record.name = mallocCopy("given");
    record.path = mallocCopy("/given");
    const auto made = KRFileReference::initWithFSRef(*reference->fileRef(), std::move(record));
    EXPECT_EQ(made->path(), tree.pathText("old.txt"));
    EXPECT_FALSE(made->isContainer());
    EXPECT_EQ(KRFileReference::initWithFSRef(*reference->fileRef())->name(), QStringLiteral("old.txt"));
}

TEST_F(KRFileReferenceCache, knownSizes_areBelieved_andUnknownOnesAreRead)
{
    _ZelFileAttribute record = known();
    record.directory = 1;
    record.dataSizeIsKnown = 0;
    record.rsrcSizeIsKnown = 0;
    record.dataSize = 1234;
    record.rsrcSize = 66;
    EXPECT_EQ(KRFileReference::initWithFSRef(*reference->fileRef(), std::move(record))->physicalSize(), 1300u);
    _ZelFileAttribute unknown = known();
    unknown.directory = 1;
    unknown.dataSize = 1234;
    EXPECT_GE(KRFileReference::initWithFSRef(*reference->fileRef(), std::move(unknown))->physicalSize(), 5000u);
}

TEST_F(KRFileReferenceCache, fileReferenceWithPath_knowsWhetherItIsAFolder_withoutAsking)
{
    _ZelFileAttribute record = ZelFileAttributeNone_fct();
    record.directory = 0;
    const auto made = KRFileReference::fileReferenceWithPath(tree.pathText("old.txt"), std::move(record));
    EXPECT_FALSE(made->isContainer());
    tree.makeFolder("folder");
    const auto folder = KRFileReference::fileReferenceWithPath(tree.pathText("folder"));
    tree.remove("folder");
    // A question to the system would fail now.
    EXPECT_TRUE(folder->isContainer());
    EXPECT_EQ(folder->physicalSize(), 0u);
}

TEST_F(KRFileReferenceCache, texts_areDroppedAfterFiveSeconds_andTheLargeIconIsNot)
{
    EXPECT_EQ(reference->displayName(), QStringLiteral("old.txt"));
    const QImage large = reference->largeIcon();
    renameFile();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(Testing::runEventLoopUntil([&] { return reference->displayName() == QStringLiteral("new.html"); }));
    const auto passed = std::chrono::steady_clock::now() - start;
    EXPECT_GT(passed, 4500ms);
    EXPECT_LT(passed, 15s);
    tree.remove("new.html");
    EXPECT_EQ(reference->largeIcon(), large);
}

TEST_F(KRFileReferenceCache, texts_areDroppedAfterFiveSeconds_onAThreadWithoutAnEventLoop)
{
    QString before;
    QString soon;
    QString late;
    std::thread([&] {
        before = reference->displayName();
        renameFile();
        soon = reference->displayName();
        std::this_thread::sleep_for(5200ms);
        late = reference->displayName();
    }).join();
    EXPECT_EQ(before, QStringLiteral("old.txt"));
    EXPECT_EQ(soon, QStringLiteral("old.txt"));
    EXPECT_EQ(late, QStringLiteral("new.html"));
}

TEST_F(KRFileReferenceCache, resetAllGettableAttributes_keepsAFlagThatCouldNotBeAskedAgain)
{
    tree.makeFile(".hidden");
    const auto hidden = KRFileReference::initWithFSRef(fsRef(tree.pathText(".hidden")));
    EXPECT_TRUE(hidden->isInvisible());
    hidden->resetAllGettableAttributes();
    tree.remove(".hidden");
    EXPECT_TRUE(hidden->isInvisible());
}

TEST_F(KRFileReferenceCache, resetAllAttributes_makesFlagsUnknown)
{
    _ZelFileAttribute record = known();
    record.directory = 0;
    record.invisible = 0;
    const auto made = KRFileReference::initWithFSRef(*reference->fileRef(), std::move(record));
    EXPECT_TRUE(made->isContainer() && made->isInvisible());
    made->resetAllAttributes();
    EXPECT_FALSE(made->isContainer() || made->isInvisible());
}

TEST_F(KRFileReferenceCache, givenTexts_areReplaced_whileTheRecordIsEmpty)
{
    const auto with = [&](MallocBuffer _ZelFileAttribute::*text) {
        _ZelFileAttribute record = ZelFileAttributeNone_fct();
        (record.*text).reset(::strdup("given"));
        return KRFileReference::initWithFSRef(*reference->fileRef(), std::move(record));
    };
    EXPECT_EQ(with(&_ZelFileAttribute::name)->name(), QStringLiteral("old.txt"));
    EXPECT_EQ(with(&_ZelFileAttribute::displayName)->displayName(), QStringLiteral("old.txt"));
    EXPECT_EQ(with(&_ZelFileAttribute::extension)->extension(), QStringLiteral("txt"));
}

TEST_F(KRFileReferenceCache, smallIcon_isScaled_onlyWhenItsDataIsLongerThan990Bytes)
{
    const auto iconOf = [&](const QImage &image) {
        const QByteArray family = iconFamilyFromImages({image}, kSelectorLarge32Bit);
        _ZelFileAttribute record = known();
        record.smallIcon.reset(static_cast<char *>(std::malloc(std::size_t(family.size()))));
        std::memcpy(record.smallIcon.get(), family.constData(), std::size_t(family.size()));
        record.smallIconDataLength = int(family.size());
        const auto made = KRFileReference::initWithFSRef(*reference->fileRef(), std::move(record));
        return std::pair(family.size() > 990, made->smallIcon().width());
    };
    QImage plain(32, 32, QImage::Format_ARGB32);
    plain.fill(Qt::red);
    QImage noisy = plain;
    for (int pixel = 0; pixel < 1024; ++pixel)
        noisy.setPixel(pixel % 32, pixel / 32, qRgb(pixel * 37 % 256, pixel * 91 % 256, pixel * 53 % 256));
    EXPECT_EQ(iconOf(plain), std::pair(false, 32));
    EXPECT_EQ(iconOf(noisy), std::pair(true, 16));
}

} // namespace Tessaron
