# Headers of Qt and of the standard library are most of what the compiler reads. They are read once for each set:
# core and gui. QtTest cannot be among them, as its headers depend on the target. Sources still name every header that they use: scripts/lint reads them
# without these.
option(RAVELIN_PRECOMPILED "Use precompiled headers" ON)

set(core_headers
    <QByteArray> <QCoreApplication> <QDateTime> <QDir> <QFile> <QFileInfo> <QHash> <QJsonArray> <QJsonDocument>
    <QJsonObject> <QList> <QObject> <QPointer> <QRegularExpression> <QSet> <QString> <QStringList> <QTimer> <QUrl>
    <QVariant> <algorithm> <array> <functional> <memory> <optional> <utility> <vector>)
set(gui_headers
    <QApplication> <QCheckBox> <QComboBox> <QKeyEvent> <QLabel> <QLineEdit> <QMenu> <QPainter> <QPushButton> <QStyle>
    <QVBoxLayout> <QWidget>)

function(ravelin_header_set name library)
    if(NOT RAVELIN_PRECOMPILED)
        return()
    endif()
    set(source ${CMAKE_BINARY_DIR}/precompiled_${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "" @ONLY)
    add_library(ravelin_precompiled_${name} OBJECT ${source})
    set_target_properties(ravelin_precompiled_${name} PROPERTIES AUTOMOC OFF)
    target_link_libraries(ravelin_precompiled_${name} PRIVATE ${library} ravelin_flags)
    target_precompile_headers(ravelin_precompiled_${name} PRIVATE ${ARGN})
endfunction()

ravelin_header_set(core Qt6::Core ${core_headers})
ravelin_header_set(gui Qt6::Widgets ${core_headers} ${gui_headers})
# ravelin_precompiled(target [set]): compile `target` with a set of precompiled headers; core unless named.
function(ravelin_precompiled target)
    set(name core)
    if(ARGC GREATER 1)
        set(name ${ARGV1})
    endif()
    if(RAVELIN_PRECOMPILED)
        target_precompile_headers(${target} REUSE_FROM ravelin_precompiled_${name})
    endif()
endfunction()
