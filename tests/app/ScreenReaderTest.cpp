#include "platform/foundation/UniqueDescriptor.h"
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

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <set>
#include <unistd.h>
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
    /// Whether a person sees it.
    [[nodiscard]] bool isShowing(const Accessible &object) const
    {
        constexpr std::uint32_t showing = 25; // ATSPI_STATE_SHOWING, the number of a bit
        const QDBusMessage answer = call(object, accessibleInterface, "GetState", {});
        if (answer.arguments().isEmpty())
            return false;
        const auto states = qdbus_cast<QList<uint>>(answer.arguments().front());
        return !states.isEmpty() && (states.front() >> showing & 1) != 0;
    }
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

/// A screen that no one sees; its number is what the server says.
class InvisibleScreen
{
public:
    InvisibleScreen()
    {
        std::array<int, 2> ends = {-1, -1};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        m_said.reset(ends[0]); // stays open: what the server writes later would end it
        UniqueDescriptor writing(ends[1]);
        m_server.emplace("Xvfb",
                         QList<QByteArray>{"-displayfd", "1", "-nolisten", "tcp", "-screen", "0", "1200x900x24"},
                         ProgramEnds{-1, writing.get()});
        writing.reset();
        struct pollfd answer = {m_said.get(), POLLIN, 0};
        EXPECT_EQ(::poll(&answer, 1, 60'000), 1) << "Xvfb is a package of the tests";
        std::array<char, 16> bytes = {};
        const ssize_t length = ::read(m_said.get(), bytes.data(), bytes.size());
        m_display = ':' + QByteArray(bytes.data(), length > 0 ? length : 0).trimmed();
    }
    [[nodiscard]] QByteArray display() const { return m_display; }

private:
    UniqueDescriptor m_said;
    std::optional<RunningProgram> m_server;
    QByteArray m_display;
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

} // namespace

TEST_F(ScreenReaderTest, everyControl_isToldOverTheBus_withNameAndRole)
{
    QString address;
    ASSERT_TRUE(runEventLoopUntil([&] { return !(address = addressOfReaders()).isEmpty(); }, std::chrono::seconds(60)));
    const Reader reader(address);
    std::optional<Accessible> program;
    ASSERT_TRUE(
        runEventLoopUntil([&] { return (program = programFor(reader)).has_value(); }, std::chrono::seconds(60)));
    struct Found {
        Accessible object;
        QString roleAbove;
        QString place; ///< for messages
    };
    std::vector<Found> waiting = {{*program, QString(), QString()}};
    std::set<QString> roles;
    std::set<QString> names;
    int objects = 0;
    while (!waiting.empty() && objects < mostObjects) {
        const auto [object, roleAbove, above] = waiting.back();
        waiting.pop_back();
        ++objects;
        const QString role = reader.roleOf(object);
        const QString name = reader.nameOf(object);
        const QString place = above + u'/' + role + u' ' + name;
        roles.insert(role);
        names.insert(name);
        EXPECT_FALSE(role.isEmpty() || role == QStringLiteral("invalid") || role == QStringLiteral("unknown"))
            << place.toStdString();
        // The field of a spin box is told as the box.
        if (isInteractive(role) && roleAbove != QStringLiteral("spin button") && reader.isShowing(object)) {
            EXPECT_FALSE(name.isEmpty()) << place.toStdString();
        }
        for (const Accessible &child : reader.childrenOf(object))
            waiting.push_back({child, role, place});
    }
    EXPECT_LT(objects, mostObjects);
    for (const char *const role : {"frame", "menu bar", "push button", "text", "combo box", "list item"})
        EXPECT_TRUE(roles.contains(QString::fromLatin1(role))) << role;
    for (const char *const name : {"Kinds of disc", "Files on the disc", "Find by name"})
        EXPECT_TRUE(names.contains(QString::fromLatin1(name))) << name;
}
