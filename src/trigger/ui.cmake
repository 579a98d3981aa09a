find_package(Qt6 6.4 REQUIRED COMPONENTS Gui Widgets)

keo_add_library(trigger_ui
    SOURCES
        dynamicconfigwidget.cpp dynamicconfigwidget.h
        matchunitdialog.cpp matchunitdialog.h
        matchunitdialogwidgets.cpp
        matchunitmodel.cpp matchunitmodel.h
        muexpressiondialog.cpp muexpressiondialog.h
    LINK keo::trigger keo::config keo::dialogs Qt6::Widgets)
