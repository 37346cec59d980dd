#include "tests/app/InvisibleScreen.h"
#include "tests/app/Waves.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <vector>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// An object as AT-SPI names it.
struct Accessible {
    QString service;
    QDBusObjectPath path;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Accessible &object)
{
    argument.beginStructure();
    argument << object.service << object.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Accessible &object)
{
    argument.beginStructure();
    argument >> object.service >> object.path;
    argument.endStructure();
    return argument;
}

} // namespace

Q_DECLARE_METATYPE(Accessible)

namespace
{

const QString accessibleInterface = QStringLiteral("org.a11y.atspi.Accessible");
constexpr int mostObjects = 3000; ///< far more than the window has

/// What a screen reader does: asks over the bus, and knows nothing else of the program.
class Reader
{
public:
    explicit Reader(const QString &address)
        : m_bus(QDBusConnection::connectToBus(address, QStringLiteral("reader")))
    {
        qDBusRegisterMetaType<Accessible>();
        qDBusRegisterMetaType<QList<Accessible>>();
    }
    ~Reader() { QDBusConnection::disconnectFromBus(QStringLiteral("reader")); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    [[nodiscard]] static Accessible desktop()
    {
        return {QStringLiteral("org.a11y.atspi.Registry"), QDBusObjectPath("/org/a11y/atspi/accessible/root")};
    }
    [[nodiscard]] QList<Accessible> childrenOf(const Accessible &object) const
    {
        const QDBusMessage answer = call(object, accessibleInterface, "GetChildren", {});
        return answer.arguments().isEmpty() ? QList<Accessible>()
                                            : qdbus_cast<QList<Accessible>>(answer.arguments().front());
    }
    [[nodiscard]] QString nameOf(const Accessible &object) const
    {
        const QDBusMessage answer = call(object, QStringLiteral("org.freedesktop.DBus.Properties"), "Get",
                                         {accessibleInterface, QStringLiteral("Name")});
        return answer.arguments().isEmpty() ? QString()
                                            : answer.arguments().front().value<QDBusVariant>().variant().toString();
    }
    /// What is true of it: each is a bit (AtspiStateType).
    [[nodiscard]] std::uint32_t statesOf(const Accessible &object) const
    {
        const QDBusMessage answer = call(object, accessibleInterface, "GetState", {});
        if (answer.arguments().isEmpty())
            return 0;
        const auto states = qdbus_cast<QList<uint>>(answer.arguments().front());
        return states.isEmpty() ? 0 : states.front();
    }
    /// Whether a person sees it.
    [[nodiscard]] bool isShowing(const Accessible &object) const { return (statesOf(object) & showing) != 0; }
    /// Presses it.
    void press(const Accessible &object) const
    {
        (void)call(object, QStringLiteral("org.a11y.atspi.Action"), "DoAction", {0});
    }
    /// Below an object, itself included; absent where there is nothing of that role and name. What is not shown counts
    /// in menus alone, which are closed.
    [[nodiscard]] std::optional<Accessible> find(const Accessible &root, const QString &role, const QString &name) const
    {
        std::vector<Accessible> waiting = {root};
        while (!waiting.empty()) {
            const Accessible object = waiting.back();
            waiting.pop_back();
            const QString own = roleOf(object);
            if (!own.contains(QStringLiteral("menu")) && !isShowing(object))
                continue;
            if (own == role && nameOf(object) == name)
                return object;
            for (const Accessible &child : childrenOf(object))
                waiting.push_back(child);
        }
        return std::nullopt;
    }

    static constexpr std::uint32_t focusable = 1U << 11;
    static constexpr std::uint32_t showing = 1U << 25;
    [[nodiscard]] QString roleOf(const Accessible &object) const
    {
        const QDBusMessage answer = call(object, accessibleInterface, "GetRoleName", {});
        return answer.arguments().isEmpty() ? QString() : answer.arguments().front().toString();
    }

private:
    [[nodiscard]] QDBusMessage call(const Accessible &object, const QString &interface, const char *method,
                                    const QVariantList &arguments) const
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(object.service, object.path.path(), interface, QString::fromLatin1(method));
        message.setArguments(arguments);
        return m_bus.call(message, QDBus::Block, 10'000);
    }

    const QDBusConnection m_bus;
};

class ScreenReaderTest : public testing::Test
{
protected:
    ScreenReaderTest()
    {
        qputenv("XDG_RUNTIME_DIR", m_tree.makeFolder("runtime"));
        m_tree.setMode("runtime", 0700);
        m_bus.emplace();
        m_launcher.emplace("/usr/libexec/at-spi-bus-launcher", QList<QByteArray>{"--launch-immediately"});
        qputenv("DISPLAY", m_screen.display());
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        m_program.emplace(TESSARON_DESKTOP_PROGRAM, QList<QByteArray>());
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    ~ScreenReaderTest() override
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("session"));
        m_program.reset();
        // Where the session ends, the launcher takes the bus of readers with it; killed, it would leave that behind.
        m_bus.reset();
        EXPECT_TRUE(m_launcher->waitUntilEnded(std::chrono::seconds(30)));
    }

    /// Of the bus that screen readers use; empty while it is not there.
    [[nodiscard]] QString addressOfReaders() const
    {
        QDBusConnection session =
            QDBusConnection::connectToBus(QString::fromUtf8(m_bus->address()), QStringLiteral("session"));
        const QDBusReply<QString> reply =
            session.call(QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                                        QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")));
        return reply.isValid() ? reply.value() : QString();
    }
    /// The program, once its window is there.
    [[nodiscard]] static std::optional<Accessible> programFor(const Reader &reader)
    {
        for (const Accessible &program : reader.childrenOf(Reader::desktop())) {
            if (!reader.childrenOf(program).isEmpty())
                return program;
        }
        return std::nullopt;
    }

    /// A second start hands its files to the program that runs.
    static void giveToProgram(const QByteArray &path)
    {
        qputenv("QT_QPA_PLATFORM", "xcb");
        const ProgramRun run = runProgram(TESSARON_DESKTOP_PROGRAM, {path});
        qputenv("QT_QPA_PLATFORM", "offscreen");
        EXPECT_EQ(run.status, 0) << run.errors.constData();
    }

    static constexpr std::chrono::seconds patience{60};
    const TemporaryTree m_tree;
    std::optional<PrivateBus> m_bus;
    const InvisibleScreen m_screen;
    std::optional<RunningProgram> m_launcher;
    std::optional<RunningProgram> m_program;
};

/// What a person chooses, types into or reads; not what only holds others.
bool isInteractive(const QString &role)
{
    static const std::set<QString> roles = {
        QStringLiteral("push button"),  QStringLiteral("toggle button"), QStringLiteral("check box"),
        QStringLiteral("radio button"), QStringLiteral("combo box"),     QStringLiteral("text"),
        QStringLiteral("spin button"),  QStringLiteral("list"),          QStringLiteral("list item"),
        QStringLiteral("table"),        QStringLiteral("tree"),          QStringLiteral("tree table"),
        QStringLiteral("menu"),         QStringLiteral("menu item"),     QStringLiteral("check menu item"),
        QStringLiteral("slider"),       QStringLiteral("progress bar"),  QStringLiteral("page tab")};
    return roles.contains(role);
}

bool isTable(const QString &role)
{
    return role == QStringLiteral("table") || role == QStringLiteral("tree") || role == QStringLiteral("tree table");
}

/// Cells are named by what is in them, which may be nothing.
bool isCell(const QString &role)
{
    return role == QStringLiteral("cell") || role == QStringLiteral("tree item");
}

/// What a reader has been told of.
struct Told {
    std::set<QString> roles;
    std::set<QString> names;
};

/// Goes through all that is shown below an object, as a reader does: what can be used, or take the focus, has a name;
/// everything has a role; and the columns of tables have names.
Told expectNamesAndRoles(const Reader &reader, const Accessible &root)
{
    struct Found {
        Accessible object;
        QString roleAbove;
        QString place; ///< for messages
    };
    Told told;
    std::vector<Found> waiting = {{root, QString(), QString()}};
    int objects = 0;
    for (; !waiting.empty() && objects < mostObjects; ++objects) {
        const auto [object, roleAbove, above] = waiting.back();
        waiting.pop_back();
        const QString role = reader.roleOf(object);
        const QString name = reader.nameOf(object);
        const QString place = above + u'/' + role + u' ' + name;
        const std::uint32_t states = reader.statesOf(object);
        told.roles.insert(role);
        told.names.insert(name);
        EXPECT_FALSE(role.isEmpty() || role == QStringLiteral("invalid") || role == QStringLiteral("unknown"))
            << place.toStdString();
        const bool isShown = (states & Reader::showing) != 0;
        const bool needsName = isInteractive(role) || ((states & Reader::focusable) != 0 && !isCell(role));
        // The field of a spin box is told as the box, and that of a combo box as that.
        const bool isPart = roleAbove == QStringLiteral("spin button") || roleAbove == QStringLiteral("combo box");
        if ((isShown || role == QStringLiteral("menu item")) && needsName && !isPart) {
            EXPECT_FALSE(name.isEmpty()) << place.toStdString();
        }
        int columns = 0;
        for (const Accessible &child : isShown || role.contains(QStringLiteral("menu")) || above.isEmpty()
                 ? reader.childrenOf(object)
                 : QList<Accessible>()) {
            waiting.push_back({child, role, place});
            if (!isTable(role) || !reader.roleOf(child).endsWith(QStringLiteral("column header")))
                continue;
            ++columns;
            EXPECT_FALSE(reader.nameOf(child).isEmpty()) << place.toStdString() << ": column " << columns;
        }
        if (isTable(role) && isShown) {
            EXPECT_GT(columns, 0) << place.toStdString();
        }
    }
    EXPECT_LT(objects, mostObjects);
    return told;
}

/// The program's windows but the first.
QList<Accessible> dialogsOf(const Reader &reader, const Accessible &program)
{
    QList<Accessible> dialogs;
    for (const Accessible &window : reader.childrenOf(program)) {
        if (reader.roleOf(window) == QStringLiteral("dialog") && reader.isShowing(window))
            dialogs << window;
    }
    return dialogs;
}

} // namespace

TEST_F(ScreenReaderTest, everyControl_ofEveryPanelAndDialog_isToldOverTheBus)
{
    QString address;
    ASSERT_TRUE(runEventLoopUntil([&] { return !(address = addressOfReaders()).isEmpty(); }, patience));
    const Reader reader(address);
    std::optional<Accessible> program;
    ASSERT_TRUE(runEventLoopUntil([&] { return (program = programFor(reader)).has_value(); }, patience));
    const Told empty = expectNamesAndRoles(reader, *program);
    for (const char *const role : {"frame", "menu bar", "push button", "text", "combo box", "list item"})
        EXPECT_TRUE(empty.roles.contains(QString::fromLatin1(role))) << role;
    for (const char *const name : {"Kinds of disc", "Files on the disc", "Find by name"})
        EXPECT_TRUE(empty.names.contains(QString::fromLatin1(name))) << name;

    const auto panelWith = [&](const QByteArray &path, const char *role, const char *name) {
        giveToProgram(path);
        const bool isThere = runEventLoopUntil(
            [&] { return reader.find(*program, QString::fromLatin1(role), QString::fromUtf8(name)).has_value(); },
            patience);
        EXPECT_TRUE(isThere) << path.constData() << ": no " << role << ' ' << name;
        (void)expectNamesAndRoles(reader, *program);
    };
    // Opens a dialog as a menu does, goes through it, and leaves it.
    const auto dialogOf = [&](const char *entry, const char *way) {
        const std::optional<Accessible> item =
            reader.find(*program, QStringLiteral("menu item"), QString::fromUtf8(entry));
        ASSERT_TRUE(item) << entry;
        reader.press(*item);
        QList<Accessible> dialogs;
        ASSERT_TRUE(runEventLoopUntil([&] { return !(dialogs = dialogsOf(reader, *program)).isEmpty(); }, patience))
            << entry;
        const Told told = expectNamesAndRoles(reader, dialogs.front());
        EXPECT_GT(told.names.size(), 5u) << entry;
        const std::optional<Accessible> out =
            reader.find(dialogs.front(), QStringLiteral("push button"), QString::fromLatin1(way));
        ASSERT_TRUE(out) << entry;
        reader.press(*out);
        EXPECT_TRUE(runEventLoopUntil([&] { return dialogsOf(reader, *program).isEmpty(); }, patience)) << entry;
    };
    panelWith(m_tree.makeFile("letter.txt", "Dear reader,\n"), "tree item", "letter.txt");
    dialogOf("Burn…", "Cancel");
    dialogOf("Save Image…", "Cancel");
    dialogOf("Split over Several Discs…", "Close");
    m_tree.makeFile("song.wav", waveOf(5, 1));
    panelWith(m_tree.makeFile("list.m3u", "song.wav\n"), "tree item", "song.wav");
    dialogOf("CD-TEXT…", "Cancel");
    const ProgramRun made = runProgram(
        "genisoimage", {"-quiet", "-J", "-V", "HOLIDAY", "-o", m_tree.path("disc.iso"), m_tree.path("letter.txt")});
    ASSERT_EQ(made.status, 0) << made.errors.constData();
    panelWith(m_tree.path("disc.iso"), "tree item", "Joliet “HOLIDAY”");
    dialogOf("Burn…", "Cancel");
#ifdef TESSARON_VIDEO_DISC
    panelWith(TESSARON_VIDEO_DISC "/VIDEO_TS", "tree item", "Title 1");
#endif
}
