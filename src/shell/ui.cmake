# The desktop program: main window, routing of files to projects, start-up. Sees everything.
find_package(Qt6 6.4 REQUIRED COMPONENTS Gui Widgets)

keo_add_library(shell_ui
    SOURCES
        analyzer.cpp analyzer.h
        debugdock.cpp debugdock.h
        emptyhint.cpp emptyhint.h
        projectmanager.cpp projectmanager.h
        startup.cpp startup.h
        startupoptions.cpp startupoptions.h
    LINK keo::servers keo::dialogs keo::project_ui keo::wave keo::image Qt6::Widgets)

add_executable(signalscope main.cpp)
target_link_libraries(signalscope PRIVATE keo::shell_ui keo::warnings)
target_compile_definitions(signalscope PRIVATE SIGNALSCOPE_VERSION="${PROJECT_VERSION}")
set_target_properties(signalscope PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${SIGNALSCOPE_BIN_DIR}
    WIN32_EXECUTABLE ON)
