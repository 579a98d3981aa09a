#include "logging.h"

namespace KEO {

Q_LOGGING_CATEGORY(lcCapture, "signalscope.capture", QtInfoMsg)
Q_LOGGING_CATEGORY(lcConfig, "signalscope.config", QtInfoMsg)
Q_LOGGING_CATEGORY(lcExport, "signalscope.export", QtInfoMsg)
Q_LOGGING_CATEGORY(lcLink, "signalscope.link", QtInfoMsg)
Q_LOGGING_CATEGORY(lcProgrammer, "signalscope.programmer", QtInfoMsg)
Q_LOGGING_CATEGORY(lcProject, "signalscope.project", QtInfoMsg)
Q_LOGGING_CATEGORY(lcServers, "signalscope.servers", QtInfoMsg)
Q_LOGGING_CATEGORY(lcShell, "signalscope.shell", QtInfoMsg)
Q_LOGGING_CATEGORY(lcTrigger, "signalscope.trigger", QtInfoMsg)
Q_LOGGING_CATEGORY(lcWavePaint, "signalscope.wave.paint", QtInfoMsg)

void setLogOutput(LogOutput output)
{
    QString rules;
    switch (output) {
    case LogOutput::Debug:
        rules = QStringLiteral("signalscope.*.debug=true\nsignalscope.wave.paint.debug=false\n"
                               "signalscope.startup.debug=false");
        break;
    case LogOutput::Warnings:
        rules = QStringLiteral("default.debug=false");
        break;
    case LogOutput::Nothing:
        rules = QStringLiteral("*=false");
        break;
    }
    QLoggingCategory::setFilterRules(rules);
}

} // namespace KEO
