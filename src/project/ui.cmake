# The projects in the main window: what stands beside the plain target and needs Qt Widgets.
find_package(Qt6 6.4 REQUIRED COMPONENTS Gui Widgets)
keo_add_library(project_ui
    SOURCES
        analyzerproject.h
        captureproject.cpp captureproject.h
        captureprojectfiles.cpp
        descriptionwatch.cpp descriptionwatch.h
        keoliteanalyzerproject.cpp keoliteanalyzerproject.h
        keolitetriggeroptionwidget.cpp keolitetriggeroptionwidget.h
        keostandardanalyzerproject.cpp keostandardanalyzerproject.h
        programmerpage.cpp programmerpage.h
        projectlog.cpp projectlog.h
        reloadbanner.cpp reloadbanner.h
        runcontrols.cpp runcontrols.h
        runtoolbar.cpp runtoolbar.h
        savedialog.cpp savedialog.h
        waitingtip.cpp waitingtip.h
        wavetabs.cpp wavetabs.h
    LINK keo::project keo::dialogs keo::export_ui keo::programmer_ui keo::trigger_ui keo::wave keo::image
         Qt6::Widgets)
