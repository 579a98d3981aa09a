// render IN.svg OUT.png WIDTH HEIGHT: sizes in pixels, transparent where nothing is drawn.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 5) {
        std::fputs("usage: render IN.svg OUT.png WIDTH HEIGHT\n", stderr);
        return 2;
    }
    QSvgRenderer renderer(arguments.at(1));
    QImage image(arguments.at(3).toInt(), arguments.at(4).toInt(), QImage::Format_ARGB32);
    if (!renderer.isValid() || image.isNull()) {
        std::fprintf(stderr, "cannot render %s\n", qPrintable(arguments.at(1)));
        return 1;
    }
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return image.save(arguments.at(2)) ? 0 : 1;
}
