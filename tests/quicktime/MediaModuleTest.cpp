#include "platform/quicktime/MediaModule.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// The module of the build, as the framework finds it.
QByteArray installedModule()
{
    return fileSystemRepresentation(
        NSBundle::mainBundle()->pathForResource(QStringLiteral("TessaronMedia"), QStringLiteral("so")));
}

bool isLoaded(const QByteArray &path)
{
    void *const library = ::dlopen(path.constData(), RTLD_LAZY | RTLD_NOLOAD);
    if (library)
        ::dlclose(library);
    return library != nullptr;
}

class MediaModule : public testing::Test
{
protected:
    const TemporaryTree tree;
};

} // namespace

TEST_F(MediaModule, isLoaded_onceAndByTheFirstMovieThatIsOpened)
{
    ASSERT_FALSE(installedModule().isEmpty());
    const QByteArray path = tree.makeFile("a.wav", waveFile(noise(1000)));
    EXPECT_FALSE(isLoaded(installedModule()));
    std::vector<std::shared_ptr<QTMovie>> movies(8);
    {
        std::vector<std::jthread> threads;
        threads.reserve(movies.size());
        for (std::shared_ptr<QTMovie> &movie : movies)
            threads.emplace_back([&movie, &path] { movie = QTMovie::movieByOpeningFileSync(path); });
    }
    EXPECT_TRUE(isLoaded(installedModule()));
    for (const std::shared_ptr<QTMovie> &movie : movies) {
        ASSERT_TRUE(movie);
        EXPECT_EQ(movie->duration(), (QTTime{1000, 44100}));
    }
    const Result<const MediaService *> one = mediaService(path), other = mediaService(path);
    ASSERT_TRUE(one && other);
    EXPECT_EQ(*one, *other);
}

TEST_F(MediaModule, isRefused_whenItBelongsToAnotherVersion)
{
    struct Row {
        const char *name;
        const char *says;
    };
    for (const Row &row : {Row{"other_version", "TessaronClasses 0.0.9"}, Row{"other_interface", "another build"},
                           Row{"without_entry", "no version that is known"}}) {
        const QByteArray path = QByteArray(WRONG_MODULES "/") + row.name + ".so";
        const NSError error = loadMediaModule(path).error();
        EXPECT_EQ(error.code(), noMediaModule) << row.name;
        const QString reason = error.localizedFailureReason();
        EXPECT_TRUE(reason.contains(QString::fromUtf8(row.says))) << qPrintable(reason);
        EXPECT_TRUE(reason.contains(QStringLiteral("TessaronClasses " TESSARON_VERSION))) << qPrintable(reason);
        EXPECT_TRUE(error.localizedRecoverySuggestion().contains(QStringLiteral("Install")));
        EXPECT_FALSE(isLoaded(path)) << "what is refused does not stay";
    }
}

TEST_F(MediaModule, isAnErrorThatSaysWhatToInstall_whenItCannotBeLoaded)
{
    const NSError absent = loadMediaModule({}).error();
    EXPECT_EQ(absent.code(), noMediaModule);
    EXPECT_TRUE(absent.localizedFailureReason().contains(QStringLiteral("TessaronMedia.so")));
    EXPECT_TRUE(absent.localizedRecoverySuggestion().contains(QStringLiteral("TESSARON_BUILD_MEDIA")));
    const NSError broken = loadMediaModule(tree.makeFile("TessaronMedia.so", "no library")).error();
    EXPECT_EQ(broken.code(), noMediaModule);
    EXPECT_TRUE(broken.localizedFailureReason().contains(tree.pathText("TessaronMedia.so")));
    EXPECT_TRUE(broken.localizedRecoverySuggestion().contains(QStringLiteral("FFmpeg")));
}

TEST_F(MediaModule, isAskedForAgain_whenItComesLater)
{
    // A main bundle goes before the folder of helper programs.
    const QByteArray wrong = tree.makeFile("bundle/Resources/TessaronMedia.so", "no library");
    NSBundle::setMainBundlePath(tree.pathText("bundle"));
    const QByteArray path = tree.makeFile("a.wav", waveFile(noise(1000)));
    NSError error;
    EXPECT_FALSE(QTMovie::movieByOpeningFileSync(path, &error));
    EXPECT_EQ(error.code(), noMediaModule);
    EXPECT_EQ(error.filePath(), tree.pathText("a.wav"));
    EXPECT_TRUE(QTMovie::newMovie()) << "what needs no file works without a module";
    tree.remove("bundle/Resources/TessaronMedia.so");
    EXPECT_TRUE(QTMovie::movieByOpeningFileSync(path, &error));
    EXPECT_FALSE(error);
}
