#include "testmain.h"

#include <QFileInfo>

#include <map>
#include <string>

namespace {

/// By name of the class's file. Filled before main by the test files, in any order.
std::map<std::string, TestMain> &testMains()
{
    static std::map<std::string, TestMain> mains;
    return mains;
}

} // namespace

bool addTestMain(const char *file, TestMain main)
{
    return testMains().emplace(QFileInfo(file).baseName().toStdString(), main).second;
}

int main(int argc, char **argv)
{
    // What a developer's shell shows of the log would be counted as the program's own.
    qunsetenv("QT_LOGGING_RULES");
    const auto found = argc > 1 ? testMains().find(argv[1]) : testMains().end();
    if (found == testMains().end()) {
        std::fprintf(stderr, "usage: %s CLASS [arguments of Qt Test]\nClasses:\n", argv[0]);
        for (const auto &entry : testMains())
            std::fprintf(stderr, "  %s\n", entry.first.c_str());
        return 2;
    }
    argv[1] = argv[0];
    return found->second(argc - 1, argv + 1);
}
