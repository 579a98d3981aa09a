# The export dialog: what stands beside the writers and needs Qt Widgets.
find_package(Qt6 6.4 REQUIRED COMPONENTS Gui Widgets)

keo_add_library(export_ui
    SOURCES exportdialog.cpp exportdialog.h
    LINK keo::export keo::wave keo::image Qt6::Widgets)
