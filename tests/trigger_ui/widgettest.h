#pragma once

#include <support/testmain.h>

#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTest>
#include <QTimer>

/// Base of the tests with windows. The offscreen platform warns about every dialog it shows.
class WidgetTest : public QuietTest
{
    Q_OBJECT

protected Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(
            QStringLiteral("^(?!This plugin does not support propagateSizeHints)")));
    }
};

/// Closes every message box that comes up with the Enter key, and remembers "title: text" of each.
class BoxWatcher
{
public:
    BoxWatcher()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            m_seen.append(box->windowTitle() + QStringLiteral(": ") + box->text());
            QTest::keyClick(box, Qt::Key_Return);
        });
        m_timer.start(5);
    }

    [[nodiscard]] const QStringList &seen() const { return m_seen; }

private:
    QTimer m_timer;
    QStringList m_seen;
};
