# The layers of the library. A layer is one folder of the source tree built into one static
# library, ny_<folder>, from every .cpp in the folder (a new source file needs no edit here).
set(NY_LAYERS)

# ny_add_layer(FOLDER DEPENDENCIES...): the layer's library, linking the libraries it builds on.
function(ny_add_layer folder)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
  set(target ny_${folder})
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ny_indicator>)
  target_link_libraries(${target} PUBLIC ${ARGN})
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${folder})
  add_library(ny_indicator::${folder} ALIAS ${target})
  set(NY_LAYERS ${NY_LAYERS} ${target} PARENT_SCOPE)
endfunction()

# One program per layer that links every object of the layer but only the libraries the layer
# names: a call into a layer above (or into one it does not name) leaves a symbol undefined and
# the build fails here, at the link, instead of waiting for a review to notice it.
function(ny_check_layer_links)
  set(stub ${CMAKE_CURRENT_BINARY_DIR}/layer_check_main.cpp)
  file(WRITE ${stub} "int main() { return 0; }\n")
  foreach(target ${NY_LAYERS})
    get_target_property(dependencies ${target} INTERFACE_LINK_LIBRARIES)
    add_executable(${target}_links ${stub})
    target_link_libraries(${target}_links PRIVATE
      -Wl,--whole-archive ${target} -Wl,--no-whole-archive ${dependencies})
  endforeach()
endfunction()
