# The viewer's scripted mode: a program of its own that starts prismview
# under the emulator, as a user would, and checks the screenshots it saves.
if(WIN32 AND TARGET prismview)
  add_executable(prismview_scripted ${CMAKE_CURRENT_LIST_DIR}/prismview_scripted.cpp
                 ${CMAKE_CURRENT_LIST_DIR}/../support/test_support.cpp ${CMAKE_CURRENT_LIST_DIR}/../support/main.cpp)
  target_include_directories(prismview_scripted PRIVATE ${CMAKE_CURRENT_LIST_DIR}/..)
  target_link_libraries(prismview_scripted PRIVATE prism32_static ${PRISM_GTEST})
  add_dependencies(prismview_scripted prismview)
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    add_test(NAME viewer_scripted COMMAND prismview_scripted --gtest_brief=1 WORKING_DIRECTORY ${PRISM_TEST_WORKDIR})
  endif()
endif()
