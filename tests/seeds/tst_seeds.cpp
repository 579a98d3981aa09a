// Every seed of every fuzz target, and what a little random damage makes of it, without a fuzzer.
// A target that finds a flaw aborts; the input that it had is then told.

#include <support/files.h>
#include <support/testmain.h>

#include <QDir>
#include <QLoggingCategory>
#include <QRandomGenerator>

#include <csignal>
#include <cstdlib>

#define SEED_TARGET(name) extern "C" int name(const uint8_t *data, size_t size);
#include "seedtargets.inc"
#undef SEED_TARGET

namespace {

using Target = int (*)(const uint8_t *, size_t);

constexpr int kRounds = 200; ///< damaged copies of a seed

QByteArray s_input;

void tellInput(int signal)
{
    std::fprintf(stderr, "signal %d at %s with %s\n", signal, QTest::currentDataTag(),
                 s_input.toPercentEncoding().constData());
    std::_Exit(1);
}

/// A copy with up to four bytes changed or pieces dropped, repeated or cut off.
QByteArray damaged(QByteArray bytes, QRandomGenerator &random)
{
    for (int i = random.bounded(1, 5); i > 0 && !bytes.isEmpty(); --i) {
        const qsizetype at = random.bounded(bytes.size());
        const qsizetype length = random.bounded(1, 17);
        switch (random.bounded(6)) {
        case 0:
            bytes[at] = char(random.bounded(256));
            break;
        case 1:
            bytes[at] = bytes[random.bounded(bytes.size())];
            break;
        case 2:
            bytes.remove(at, length);
            break;
        case 3:
            bytes.insert(at, bytes.mid(at, length).repeated(random.bounded(1, 100)));
            break;
        case 4:
            bytes.insert(at, bytes.mid(random.bounded(bytes.size()), 8 * length));
            break;
        default:
            bytes.truncate(at);
        }
    }
    return bytes;
}

} // namespace

Q_DECLARE_METATYPE(Target)

class tst_Seeds : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
        std::signal(SIGABRT, tellInput);
        std::signal(SIGSEGV, tellInput);
    }
    void holds_data();
    void holds();
};

void tst_Seeds::holds_data()
{
    addColumns<Target, QString>({"target", "path"});
    const auto addSeeds = [](Target target, const char *name) {
        const QString kind = QString::fromLatin1(name).section(u'_', 1);
        const QDir folder(QStringLiteral(KEO_SOURCE_DIR "/fuzz/corpus/") + kind);
        const QStringList files = folder.entryList(QDir::Files, QDir::Name);
        QVERIFY2(!files.isEmpty(), name);
        for (const QString &file : files)
            addRow(qPrintable(kind + u'/' + file), target, folder.filePath(file));
    };
#define SEED_TARGET(name) addSeeds(name, #name);
#include "seedtargets.inc"
#undef SEED_TARGET
}

void tst_Seeds::holds()
{
    QFETCH(Target, target);
    QFETCH(QString, path);
    const QByteArray bytes = contentOf(path);
    QRandomGenerator random(quint32(bytes.size()));
    for (int round = 0; round <= kRounds; ++round) {
        s_input = round == 0 ? bytes : damaged(bytes, random);
        target(reinterpret_cast<const uint8_t *>(s_input.constData()), size_t(s_input.size()));
    }
}

KEO_TEST_MAIN(tst_Seeds)
#include "tst_seeds.moc"
