#pragma once

#include "tests/support/EventLoop.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

/// Presses a key where the keyboard is.
inline void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
    drainEventLoop();
}

/// Types a name over the one in the editor that has the keyboard, and presses Return.
inline void typeName(const char *name)
{
    auto *const editor = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QString::fromUtf8(name));
    press(Qt::Key_Return);
}

} // namespace Tessaron::Testing
