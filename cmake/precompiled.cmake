# What most files of a kind include is read once for all of them: half of a file's compiling time
# goes into the headers of the standard library, Qt and GoogleTest. The fuzz build goes without, so
# that a file which forgets an include is found out.

set(standard_headers <algorithm> <array> <chrono> <cmath> <filesystem> <functional> <map> <memory>
                     <optional> <set> <span> <string> <string_view> <unordered_map> <utility>
                     <variant> <vector>)
set(gui_headers <QBuffer> <QCoreApplication> <QFont> <QFontMetricsF> <QImage> <QLocale> <QPainter>
                <QString> <QStringList> <QTextBlock> <QTextCursor> <QTextDocument> <QTextLayout>
                <QTextTable> <QTimer>)
set(widgets_headers <QApplication> <QCheckBox> <QComboBox> <QDialog> <QDialogButtonBox>
                    <QFormLayout> <QGroupBox> <QLabel> <QLineEdit> <QListWidget> <QMainWindow>
                    <QMenu> <QPushButton> <QStatusBar> <QTextEdit> <QToolBar> <QVBoxLayout>)

# Files of one kind are compiled with the same definitions, or the compiler refuses the header.
function(tenora_precompiled_kind kind)
  cmake_parse_arguments(KIND "" "" "HEADERS;LIBRARIES" ${ARGN})
  add_library(tenora_precompiled_${kind} OBJECT ${CMAKE_SOURCE_DIR}/cmake/precompiled.cc)
  target_link_libraries(tenora_precompiled_${kind} PRIVATE tenora_flags ${KIND_LIBRARIES})
  target_precompile_headers(tenora_precompiled_${kind} PRIVATE ${KIND_HEADERS})
endfunction()

# Tests are compiled more often than they are run.
set(tenora_test_options $<$<CONFIG:Release>:-O1>)

if(NOT TENORA_FUZZ)
  tenora_precompiled_kind(standard HEADERS ${standard_headers})
  tenora_precompiled_kind(gui HEADERS ${standard_headers} ${gui_headers} LIBRARIES Qt6::Gui)
  tenora_precompiled_kind(widgets HEADERS ${standard_headers} ${gui_headers} ${widgets_headers}
                                  LIBRARIES Qt6::Widgets)
  if(TENORA_TESTS)
    tenora_precompiled_kind(test HEADERS ${standard_headers} <gmock/gmock.h> <gtest/gtest.h>
                                 LIBRARIES GTest::gmock)
    target_compile_options(tenora_precompiled_test PRIVATE ${tenora_test_options})
  endif()
endif()

# tenora_precompile(TARGET LIBRARIES …): the richest precompiled header that a target with these
# libraries can take.
function(tenora_precompile target)
  if(TENORA_FUZZ)
    return()
  endif()
  set(kind standard)
  if("Qt6::Widgets" IN_LIST ARGN)
    set(kind widgets)
  elseif("Qt6::Gui" IN_LIST ARGN)
    set(kind gui)
  elseif("GTest::gmock" IN_LIST ARGN)
    set(kind test)
  endif()
  target_precompile_headers(${target} REUSE_FROM tenora_precompiled_${kind})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fpch-preprocess)  # ccache reads it
  endif()
endfunction()
