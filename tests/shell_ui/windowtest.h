#pragma once

#include <support/testmain.h>

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <functional>

/// Base of the tests with windows: fails on warnings, but for what the toolkit says when there is
/// no window system.
class WindowTest : public QuietTest
{
    Q_OBJECT

protected Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(
            QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    }
};

/// Hands the next modal widget of type Box to \a act, from within the event loop that shows it. Ask
/// for it before the call that brings the box up.
template <typename Box>
class OnModal final : public QObject
{
public:
    explicit OnModal(std::function<void(Box *)> act) : m_act(std::move(act))
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            auto *const box = qobject_cast<Box *>(QApplication::activeModalWidget());
            if (!box || m_seen)
                return;
            m_seen = true;
            m_act(box);
        });
        m_timer.start(5);
    }
    [[nodiscard]] bool seen() const { return m_seen; }

private:
    QTimer m_timer;
    std::function<void(Box *)> m_act;
    bool m_seen = false;
};

/// Answers the next message box with the keyboard and keeps what it said as "title: text
/// [buttons]".
class BoxAnswer final
{
public:
    explicit BoxAnswer(QMessageBox::StandardButton answer)
        : m_box([this, answer](QMessageBox *box) {
              m_text = box->windowTitle() + ": " + box->text();
              m_buttons = box->standardButtons();
              m_default = box->standardButton(box->defaultButton());
              m_hadParent = box->parentWidget() != nullptr;
              QTest::keyClick(box->button(answer), Qt::Key_Space);
          })
    {
    }
    [[nodiscard]] bool seen() const { return m_box.seen(); }
    [[nodiscard]] QString text() const { return m_text; }
    [[nodiscard]] QMessageBox::StandardButtons buttons() const { return m_buttons; }
    [[nodiscard]] QMessageBox::StandardButton defaultButton() const { return m_default; }
    [[nodiscard]] bool hadParent() const { return m_hadParent; }

private:
    QString m_text;
    QMessageBox::StandardButtons m_buttons;
    QMessageBox::StandardButton m_default = QMessageBox::NoButton;
    bool m_hadParent = false;
    OnModal<QMessageBox> m_box;
};

#define KEO_WINDOW_TEST_MAIN(Test)                                                                 \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);                               \
        return runTest<Test, QApplication>(argc, argv);                                            \
    }
