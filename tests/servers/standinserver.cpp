#include <QByteArray>
#include <QFile>

#include <cstdio>

/// Stands in for a cable server: floods its standard output, leaves its arguments in a file beside
/// itself, one a line, and ends with code 7 when its standard input closes.
int main(int argc, char **argv)
{
    const QByteArray block(1 << 20, 'x');
    for (int i = 0; i < 4; ++i)
        std::fwrite(block.constData(), 1, static_cast<std::size_t>(block.size()), stdout);
    std::fflush(stdout);

    QFile unfinished(QString::fromLocal8Bit(argv[0]) + QStringLiteral(".tmp"));
    if (!unfinished.open(QIODevice::WriteOnly))
        return 1;
    for (int i = 1; i < argc; ++i)
        unfinished.write(QByteArray(argv[i]) + '\n');
    unfinished.close();
    unfinished.rename(QString::fromLocal8Bit(argv[0]) + QStringLiteral(".args"));

    while (std::getchar() != EOF) {
    }
    return 7;
}
