#include "tools/tessaron/Text.h"

#include "tools/tessaron/JsonWriter.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace Tessaron::Tool
{

namespace
{

TEST(Text, lastComponent_ignoresSlashesAtTheEnd)
{
    EXPECT_EQ(lastComponent("a/b"), "b");
    EXPECT_EQ(lastComponent("a/b//"), "b");
    EXPECT_EQ(lastComponent("b"), "b");
    EXPECT_EQ(lastComponent("/"), "/");
    EXPECT_EQ(lastComponent("//"), "/");
    EXPECT_EQ(lastComponent("/b"), "b");
    EXPECT_EQ(lastComponent(""), "");
}

TEST(Text, percentEncoded_keepsSlashesAndPlainCharacters)
{
    EXPECT_EQ(percentEncoded("/a b/\xe4%"), "/a%20b/%E4%25");
}

TEST(Text, counted_choosesTheForm)
{
    EXPECT_EQ(counted(0, "file", "files"), QStringLiteral("0 files"));
    EXPECT_EQ(counted(1, "file", "files"), QStringLiteral("1 file"));
}

TEST(JsonWriter, output_isReadAsItWasMeant)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    JsonWriter writer(file.handle());
    writer.beginObject();
    writer.member("text", QStringLiteral("quote \" backslash \\ line\nend \u0001 ü"));
    writer.member("number", std::uint64_t(9007199254740992));
    writer.member("negative", std::int64_t(-36));
    writer.member("truth", true);
    writer.key("seconds");
    writer.value(1.25, 3);
    writer.key("nothing");
    writer.null();
    writer.key("list");
    writer.beginArray();
    writer.beginObject();
    writer.pathMember("path", "/good");
    writer.endObject();
    writer.beginObject();
    writer.pathMember("path", "/bad\xff");
    writer.endObject();
    writer.endArray();
    writer.endObject();
    ASSERT_TRUE(writer.finish());

    ASSERT_TRUE(file.seek(0));
    const QByteArray written = file.readAll();
    EXPECT_EQ(written.count('\n'), 1);
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(written, &error).object();
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    EXPECT_EQ(object[QStringLiteral("text")].toString(), QStringLiteral("quote \" backslash \\ line\nend \u0001 ü"));
    EXPECT_EQ(object[QStringLiteral("number")].toInteger(), 9007199254740992);
    EXPECT_EQ(object[QStringLiteral("negative")].toInteger(), -36);
    EXPECT_TRUE(object[QStringLiteral("truth")].toBool());
    EXPECT_EQ(object[QStringLiteral("seconds")].toDouble(), 1.25);
    EXPECT_TRUE(object[QStringLiteral("nothing")].isNull());
    const QJsonValue list = object[QStringLiteral("list")];
    EXPECT_EQ(list[0], QJsonObject({{QStringLiteral("path"), QStringLiteral("/good")}}));
    EXPECT_EQ(list[1],
              QJsonObject({{QStringLiteral("path"), QStringLiteral("/bad\ufffd")},
                           {QStringLiteral("pathBytes"), QStringLiteral("/bad%FF")}}));
}

TEST(JsonWriter, finish_fails_whenNothingCanBeWritten)
{
    QFile full(QStringLiteral("/dev/full"));
    ASSERT_TRUE(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    JsonWriter writer(full.handle());
    writer.beginArray();
    for (std::int64_t number = 0; number < 100000; ++number) // more than the buffer holds
        writer.value(number);
    writer.endArray();
    EXPECT_FALSE(writer.finish());
    EXPECT_EQ(errno, ENOSPC);
}

} // namespace

} // namespace Tessaron::Tool
