# SPDX-License-Identifier: MIT
# Runs the examples and the demo program as a user would, each in an empty folder, and tests what
# they say, how they end, and that a refusal is one clear line.
if(NOT TARGET qvapi_demo)
  return()
endif()
find_program(IMAGEMAGICK_CONVERT convert REQUIRED)

# qv_add_run(name [FAILS] [PREPARE command...] COMMAND command... SAYS regex)
function(qv_add_run name)
  cmake_parse_arguments(run "FAILS" "SAYS" "PREPARE;COMMAND" ${ARGN})
  add_test(NAME ${name}
           COMMAND ${CMAKE_COMMAND} "-DFOLDER=${CMAKE_CURRENT_BINARY_DIR}/run/${name}"
                   "-DPREPARE=${run_PREPARE}" "-DCOMMAND=${run_COMMAND}" "-DSAYS=${run_SAYS}"
                   -DFAILS=${run_FAILS} -P ${CMAKE_SOURCE_DIR}/tests/RunExample.cmake)
endfunction()

qv_add_run(Example.ConvertFrame COMMAND $<TARGET_FILE:convert_frame>
           SAYS "first pixel is B 0, G 96, R 0")
qv_add_run(Example.ConvertFrameUnwritable FAILS
           COMMAND $<TARGET_FILE:convert_frame> /proc/none/frame.png
           SAYS "^convert_frame: .*frame.png")
qv_add_run(Example.NodeMap COMMAND $<TARGET_FILE:node_map>
           SAYS "may be 0 to 4.*now uses 0.45.*refused.*code 0x1080001.*is read-only")
# (131 / 255)^2 x 255 = 67.3, (67 / 255)^0.5 x 255 = 130.7, then the square again.
qv_add_run(Example.FilterList COMMAND $<TARGET_FILE:filter_list>
           SAYS "is 131, through both filters 131, and once more through the first alone 67")
# (128 / 255)^2 x 255 = 64.3
qv_add_run(Example.OwnMemory COMMAND $<TARGET_FILE:own_memory>
           SAYS "application's: true.*into 64.*refused.*gone")

qv_add_run(Example.RecordVideo COMMAND $<TARGET_FILE:record_video> new/clips
           SAYS "^Closed new/clips/clip1.avi\nClosed .*clip2.avi\nClosed .*clip3.avi\n$")
qv_add_run(Example.RecordVideoUnwritable FAILS COMMAND $<TARGET_FILE:record_video> /proc/none
           SAYS "^record_video: File /proc/none/clip2.avi could not be opened")

set(demo $<TARGET_FILE:qvapi_demo>)
qv_add_run(Demo.Chart COMMAND ${demo} --output out
           SAYS "7 Bilinear3.*Pol1Mono12.*Multiplication brings.*Suppressed.*jpeg.avi: 75 of 75.*The page is .*out/index.html")
# Sizes that fill no tile or group, and a picture without light, of which no mean is above another.
qv_add_run(Demo.OddSize PREPARE ${IMAGEMAGICK_CONVERT} rose: -crop 37x19+0+0 +repage
           -type TrueColor odd.png COMMAND ${demo} odd.png SAYS "The page is .*demo-out/index.html")
qv_add_run(Demo.Black PREPARE ${IMAGEMAGICK_CONVERT} -size 64x48 xc:black PNG24:black.png
           COMMAND ${demo} black.png SAYS "The page is .*demo-out/index.html")
foreach(kind png bmp)
  qv_add_run(Demo.Photograph.${kind} PREPARE ${IMAGEMAGICK_CONVERT} rose: -type TrueColor
             rose.${kind} COMMAND ${demo} rose.${kind} SAYS "The page is .*demo-out/index.html")
endforeach()
qv_add_run(Demo.MissingFile FAILS COMMAND ${demo} none.png SAYS "none.png could not be opened")
qv_add_run(Demo.TextFile FAILS PREPARE sh -c "echo no picture > text.png"
           COMMAND ${demo} text.png SAYS "text.png is unreadable")
qv_add_run(Demo.TooSmall FAILS PREPARE ${IMAGEMAGICK_CONVERT} -size 1x1 xc:red PNG24:one.png
           COMMAND ${demo} one.png SAYS "one.png is too small: 1 x 1")
qv_add_run(Demo.OutputIsFile FAILS PREPARE ${CMAKE_COMMAND} -E touch file
           COMMAND ${demo} --output file SAYS "file is unwritable")
qv_add_run(Demo.Arguments FAILS COMMAND ${demo} --unknown SAYS "--unknown. is not understood")
