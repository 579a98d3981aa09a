# Headers of Qt and of the standard library, read once for all targets with the same flags: most of
# the time to compile a source goes into them. A source includes what it uses all the same, because
# the build has to work with CMAKE_DISABLE_PRECOMPILE_HEADERS too; the fuzz preset sees to it.

# No header of Qt Gui or Qt Widgets here: what knows no window could come to use it unseen.
set(keo_plain_headers
    <QBitArray> <QByteArray> <QCoreApplication> <QDateTime> <QDir> <QFile> <QFileInfo> <QHash>
    <QList> <QLoggingCategory> <QMap> <QObject> <QPointer> <QProcess> <QRegularExpression> <QSet>
    <QString> <QStringList> <QTimer> <QVariant> <QXmlStreamReader> <QXmlStreamWriter> <QtEndian>
    <algorithm> <array> <bit> <charconv> <cmath> <cstdio> <cstring> <functional> <limits> <map>
    <memory> <optional> <utility> <vector>)
set(keo_window_headers
    <QAction> <QApplication> <QCheckBox> <QComboBox> <QDialog> <QDialogButtonBox> <QDockWidget>
    <QFileDialog> <QFormLayout> <QGraphicsItem> <QGraphicsScene> <QGraphicsView> <QGridLayout>
    <QGroupBox> <QHBoxLayout> <QHeaderView> <QIcon> <QKeyEvent> <QLabel> <QLineEdit> <QMainWindow>
    <QMenu> <QMessageBox> <QPainter> <QPlainTextEdit> <QPushButton> <QScreen> <QScrollBar>
    <QShortcut> <QSpinBox> <QStyledItemDelegate> <QTabWidget> <QToolBar> <QToolButton> <QTreeWidget>
    <QVBoxLayout> <QWidget>)
set(keo_test_headers <QElapsedTimer> <QSignalSpy> <QTemporaryDir> <QTest>)

# keo_add_precompiled(NAME LINK Qt6::Core HEADERS <QString> <vector>): a target that only holds the
# headers, for others of the same flags: target_precompile_headers(x REUSE_FROM NAME).
function(keo_add_precompiled name)
    cmake_parse_arguments(ARG "" "" "LINK;HEADERS" ${ARGN})
    set(source ${PROJECT_BINARY_DIR}/precompiled/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "")
    add_library(${name} OBJECT EXCLUDE_FROM_ALL ${source})
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    target_link_libraries(${name} PRIVATE ${ARG_LINK} keo::warnings)
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# keo_knows_windows(RESULT LIBRARY...): whether one of the libraries, or what they link, is Qt Widgets.
function(keo_knows_windows result)
    set(${result} OFF PARENT_SCOPE)
    foreach(library IN LISTS ARGN)
        if(library STREQUAL Qt6::Widgets)
            set(${result} ON PARENT_SCOPE)
            return()
        endif()
        if(library MATCHES "^keo::")
            get_target_property(links ${library} INTERFACE_LINK_LIBRARIES)
            keo_knows_windows(found ${links})
            if(found)
                set(${result} ON PARENT_SCOPE)
                return()
            endif()
        endif()
    endforeach()
endfunction()
