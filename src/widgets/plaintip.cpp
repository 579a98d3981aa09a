#include "plaintip.h"

#include <QTextDocument>

namespace KEO {

QString plainTip(const QString &text)
{
    if (!Qt::mightBeRichText(text))
        return text;
    return QStringLiteral("<p style=\"white-space:pre-wrap\">%1</p>").arg(text.toHtmlEscaped());
}

} // namespace KEO
