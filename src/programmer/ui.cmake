# The programmer page: what stands beside the plain target and needs Qt Widgets.
find_package(Qt6 6.4 REQUIRED COMPONENTS Gui Widgets)
keo_add_library(programmer_ui
    SOURCES
        deviceconfigurationdlg.cpp deviceconfigurationdlg.h
        deviceselector.cpp deviceselector.h
        fsfileedit.cpp fsfileedit.h
        keoprogrammeritemdelegate.cpp keoprogrammeritemdelegate.h
        keoprogrammermodel.cpp keoprogrammermodel.h
        keoprogrammertable.cpp
        keoprogrammerwidget.cpp keoprogrammerwidget.h
        legiblecolor.cpp legiblecolor.h
        programmerlog.cpp programmerlog.h
    LINK keo::programmer keo::dialogs keo::image Qt6::Widgets)
