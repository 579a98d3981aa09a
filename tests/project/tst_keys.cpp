// The keys of the window: none has two meanings at one place, and the man page lists them all.

#include <support/debugapplication.h>
#include <support/desktop.h>
#include <support/files.h>

#include <QAbstractItemView>
#include <QHash>
#include <QMenu>
#include <QRegularExpression>
#include <QSet>
#include <QShortcut>

using namespace KEO;

class tst_Keys : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void areUnambiguousAndListed();
};

namespace {

/// A key with what it belongs to.
struct Binding
{
    QString key;
    Qt::ShortcutContext context;
    const QWidget *owner;
    const QObject *meaning;
    bool isOn;

    [[nodiscard]] bool countsAt(const QWidget *focus) const
    {
        if (context == Qt::WidgetShortcut)
            return isOn && owner == focus;
        return isOn && (context != Qt::WidgetWithChildrenShortcut || owner == focus ||
                        owner->isAncestorOf(focus));
    }
};

QString nameOf(const QKeySequence &key)
{
    return key == QKeySequence(Qt::Key_Delete) ? QStringLiteral("Delete") : key.toString();
}

QList<Binding> bindingsIn(QWidget &window)
{
    QList<Binding> bindings;
    for (const QWidget *widget : window.findChildren<QWidget *>() + QList<QWidget *>{&window}) {
        for (const QAction *action : widget->actions()) {
            for (const QKeySequence &key : action->shortcuts())
                bindings.append(
                    {nameOf(key), action->shortcutContext(), widget, action, action->isEnabled()});
        }
    }
    for (const QShortcut *shortcut : window.findChildren<QShortcut *>())
        bindings.append({nameOf(shortcut->key()), shortcut->context(),
                         qobject_cast<const QWidget *>(shortcut->parent()), shortcut,
                         shortcut->isEnabled()});
    return bindings;
}

QStringList ambiguities(const QWidget &window, const QList<Binding> &bindings)
{
    QStringList found;
    for (const QWidget *focus : window.findChildren<QWidget *>()) {
        QHash<QString, const QObject *> meanings;
        for (const Binding &binding : bindings) {
            if (!binding.countsAt(focus))
                continue;
            const QObject *&meaning = meanings[binding.key];
            if (meaning && meaning != binding.meaning)
                found.append(binding.key + QLatin1String(" in ") +
                             QLatin1String(focus->metaObject()->className()));
            meaning = binding.meaning;
        }
    }
    return found;
}

QSet<QString> listedKeys()
{
    QString page = contentOf(QStringLiteral(KEO_SOURCE_DIR "/packaging/signalscope.1"));
    page = page.section(QLatin1String(".SH KEYS"), 1).section(QLatin1String("\n.SH "), 0, 0);
    static const QRegularExpression row(QStringLiteral("^([^|\n]+)\\|[a-z]"),
                                        QRegularExpression::MultilineOption);
    QSet<QString> keys;
    for (const QRegularExpressionMatch &match : row.globalMatch(page)) {
        for (const QString &key : match.captured(1).split(QStringLiteral(", ")))
            keys.insert(key);
    }
    return keys;
}

} // namespace

/// With everything open that has keys: the waves, a comparison, a rehearsal, the debug messages.
void tst_Keys::areUnambiguousAndListed()
{
    TestDesign design;
    design.windows = 2;
    Desktop d(design);
    d.open();
    d.capture();
    d.tabs()->setCurrentIndex(1);
    d.press(Qt::Key_R, Qt::ControlModifier);
    auto *names = d.wave(1)->findChild<QAbstractItemView *>();
    names->setFocus();
    QTest::keyClick(names, Qt::Key_D, Qt::ControlModifier);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu);
    menu->setActiveAction(menu->actions().first());
    QTest::keyClick(menu, Qt::Key_Return);
    QTRY_VERIFY(!d.wave(1)); // but a page with two

    const QList<Binding> bindings = bindingsIn(*d.window);
    QCOMPARE(ambiguities(*d.window, bindings), QStringList());

    QSet<QString> keys;
    for (const Binding &binding : bindings)
        keys.insert(binding.key);
    keys.remove(QStringLiteral("Return")); // the other Enter
    QStringList missing = (keys - listedKeys()).values();
    QCOMPARE(missing.join(u' '), QString());
    // Keys of dialogs, of what comes up beside the waves, and of no action.
    const QSet<QString> others = {"Alt+B", "Alt+T", "Alt+D", "Alt+H",
                                  "Alt+W", "Alt+K", "Esc",   "Shift+F3"};
    missing = (listedKeys() - keys - others).values();
    QCOMPARE(missing.join(u' '), QString());
}

KEO_OWN_TEST_MAIN((runTest<tst_Keys, DebugApplication>))
#include "tst_keys.moc"
