# The viewer widget: what stands beside wave_data and needs Qt Widgets. Links nothing else.
add_library(keo_wave STATIC
    localized.h
    notificationcenter.cpp notificationcenter.h
    viewergeometry.h)
add_library(keo::wave ALIAS keo_wave)
target_include_directories(keo_wave PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(keo_wave PUBLIC keo::wave_data Qt6::Widgets PRIVATE keo::warnings)

# Wave items
target_sources(keo_wave PRIVATE
    buswaveitem.cpp buswaveitem.h
    samplechanges.cpp samplechanges.h
    signalwaveitem.cpp signalwaveitem.h
    tracegeometry.cpp tracegeometry.h
    tracepainting.cpp tracepainting.h
    valuefont.cpp valuefont.h
    waveitem.cpp waveitem.h
)

# Wave view, ruler, widget
target_sources(keo_wave PRIVATE
    mouseaction.h
    popupmenu.cpp popupmenu.h
    rulerview.cpp rulerview.h
    scaleruler.cpp scaleruler.h
    timesliderdata.cpp timesliderdata.h
    timeslideritem.cpp timeslideritem.h
    waveview.cpp waveview.h
    waveviewactions.cpp waveviewactions.h
    wavemonitorwidget.cpp wavemonitorwidget.h
    windowstate.h
)

# Tree model and view
target_sources(keo_wave PRIVATE
    dragdropdelegate.cpp dragdropdelegate.h
    rowtext.cpp rowtext.h
    signalheaderview.cpp signalheaderview.h
    signaltreeitemdelegate.cpp signaltreeitemdelegate.h
    signaltreearrangement.cpp
    signaltreemodel.cpp signaltreemodel.h
    signaltreeview.cpp signaltreeview.h
    treecontextmenu.cpp treecontextmenu.h
    treeproxystyle.cpp treeproxystyle.h
    waveviewdatasource.cpp waveviewdatasource.h
)
