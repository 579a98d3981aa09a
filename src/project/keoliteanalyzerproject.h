#pragma once

#include "captureproject.h"

namespace KEO {

/// A design with one lite analyzer core in the main window: the form that says when a capture
/// begins, the runs, and one wave tab.
class KeoLiteAnalyzerProject final : public CaptureProject
{
    Q_OBJECT

public:
    explicit KeoLiteAnalyzerProject(QObject *parent = nullptr);

public Q_SLOTS:
    void drawSignalView();
};

} // namespace KEO
