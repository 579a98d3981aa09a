#include "keostandardanalyzerproject.h"

#include "standardpage.h"

#include <design/standarddesign.h>
#include <link/jtagsession.h>

namespace KEO {

KeoStandardAnalyzerProject::KeoStandardAnalyzerProject(QObject *parent)
    : CaptureProject(makeKind<StandardDesign, StandardPage>(*JtagSession::instance()), parent)
{
    connect(&design(), &Design::captured, this, &KeoStandardAnalyzerProject::drawSignalView);
}

void KeoStandardAnalyzerProject::drawSignalView(int coreIdx, int winIdx)
{
    showCapture(coreIdx, winIdx);
}

void KeoStandardAnalyzerProject::onWindowNumChanged()
{
    static_cast<StandardPage &>(page()).onWindowNumChanged();
}

void KeoStandardAnalyzerProject::onKoChanged(QTreeWidgetItem *item)
{
    static_cast<StandardPage &>(page()).onKoChanged(item);
}

} // namespace KEO
