#include "keoliteanalyzerproject.h"

#include "litepage.h"

#include <design/litedesign.h>
#include <link/jtagsession.h>

namespace KEO {

KeoLiteAnalyzerProject::KeoLiteAnalyzerProject(QObject *parent)
    : CaptureProject(makeKind<LiteDesign, LitePage>(*JtagSession::instance()), parent)
{
    connect(&design(), &Design::captured, this, &KeoLiteAnalyzerProject::drawSignalView);
}

void KeoLiteAnalyzerProject::drawSignalView()
{
    showCapture(0, 0); // there is one
}

} // namespace KEO
