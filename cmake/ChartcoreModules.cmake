# chartcore_module(NAME [DEPS m...]) declares the object library chartcore_NAME
# from src/chartcore/NAME/*.cpp. The objects are compiled once, with the export
# macro in "building" mode, and serve both the shared library and the tests.
set(CHARTCORE_MODULES "" CACHE INTERNAL "")

function(chartcore_module name)
  cmake_parse_arguments(M "" "" "DEPS" ${ARGN})
  file(GLOB _srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/chartcore/${name}/*.cpp)
  file(GLOB _hdrs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/chartcore/${name}/*.h)
  set(CHARTCORE_MODULES ${CHARTCORE_MODULES} ${name} CACHE INTERNAL "")
  if(NOT _srcs)
    # A header-only module still gets an interface target so dependants link.
    add_library(chartcore_${name} INTERFACE)
    target_include_directories(chartcore_${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
    foreach(d IN LISTS M_DEPS)
      target_link_libraries(chartcore_${name} INTERFACE chartcore_${d})
    endforeach()
    return()
  endif()
  add_library(chartcore_${name} OBJECT ${_srcs} ${_hdrs})
  target_include_directories(chartcore_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_compile_definitions(chartcore_${name} PRIVATE CHARTCORE_BUILDING)
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(chartcore_${name} PUBLIC CHARTCORE_STATIC)
  endif()
  foreach(d IN LISTS M_DEPS)
    target_link_libraries(chartcore_${name} PUBLIC chartcore_${d})
  endforeach()
endfunction()

# chartcore_module_objects(OUT m...) sets OUT to the object files of the
# named modules (header-only modules contribute none), for programs that link
# module objects directly instead of the shared library.
function(chartcore_module_objects out)
  set(_objs)
  foreach(d IN LISTS ARGN)
    if(TARGET chartcore_${d})
      get_target_property(_type chartcore_${d} TYPE)
      if(_type STREQUAL "OBJECT_LIBRARY")
        list(APPEND _objs $<TARGET_OBJECTS:chartcore_${d}>)
      endif()
    endif()
  endforeach()
  set(${out} ${_objs} PARENT_SCOPE)
endfunction()

# chartcore_module_test(NAME [DEPS m...]) builds tests/NAME/*_test.cpp into one
# program that links the module's objects and those of the layers below it, so a
# module's tests build even while a module above it is being written.
function(chartcore_module_test name)
  cmake_parse_arguments(T "" "" "DEPS" ${ARGN})
  file(GLOB _tests CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${name}/*.cpp)
  if(NOT _tests)
    return()
  endif()
  chartcore_module_objects(_objs ${name} ${T_DEPS})
  add_executable(chartcore_${name}_tests ${_tests} ${_objs})
  target_link_libraries(chartcore_${name}_tests PRIVATE chartcore_${name} GTest::gtest GTest::gtest_main)
  target_include_directories(chartcore_${name}_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(chartcore_${name}_tests PRIVATE
    CHARTCORE_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  add_test(NAME ${name} COMMAND chartcore_${name}_tests)
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${CHARTCORE_TEST_ENV}" LABELS "unit")
endfunction()
