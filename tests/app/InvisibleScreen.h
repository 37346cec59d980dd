#pragma once

#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/RunProgram.h"

#include <QByteArray>

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace Tessaron::Testing
{

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

} // namespace Tessaron::Testing
