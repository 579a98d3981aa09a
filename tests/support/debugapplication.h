#pragma once

#include <QApplication>

/// An application whose command line says -debug, without the test's own options.
class DebugApplication final : public QApplication
{
public:
    DebugApplication(int &, char **) : QApplication(s_count, s_arguments) {}

private:
    static inline char s_name[] = "signalscope";
    static inline char s_debug[] = "-debug";
    static inline char *s_arguments[] = {s_name, s_debug, nullptr};
    static inline int s_count = 2;
};
