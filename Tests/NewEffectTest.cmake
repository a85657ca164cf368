# Runs Scripts/new-effect on copies of what it edits, looks at what it wrote, and compiles that as far as its meaning.

set(edited Proc/Effects/Lumetta/CMakeLists.txt Proc/Effects/Lumetta/Registrator.cpp Proc/Settings/Types/ShapeTypes.cpp
  Proc/Settings/Types/StyleTypes.cpp Tests/CMakeLists.txt Tests/Proc/Effects/Lumetta/RegistratorTest.cpp)
file(REMOVE_RECURSE ${work_dir})
foreach(file IN LISTS edited ITEMS Scripts/new-effect)
  cmake_path(GET file PARENT_PATH folder)
  file(COPY ${source_dir}/${file} DESTINATION ${work_dir}/${folder})
endforeach()
file(COPY ${source_dir}/Samples/plugin DESTINATION ${work_dir}/Samples)

# In the midst of the lists, and behind all that there is.
function(make)
  execute_process(COMMAND ${python} ${work_dir}/Scripts/new-effect ${ARGV} OUTPUT_VARIABLE said
    COMMAND_ERROR_IS_FATAL ANY)
  list(GET ARGV 0 name)
  foreach(word "'${name}.*:Registrator.*:*EveryEffect*${name}*'" "Scripts/goldens" "Scripts/reference"
      "SettingsEffect${name}.h")
    string(FIND "${said}" "${word}" at)
    if(at EQUAL -1)
      message(SEND_ERROR "new-effect ${name} does not tell of ${word}: ${said}")
    endif()
  endforeach()
endfunction()
make(Lustre)
make(ZoomBurst shape)

function(expect file)
  file(READ ${work_dir}/${file} text)
  foreach(line IN LISTS ARGN)
    string(FIND "${text}" "${line}" at)
    if(at EQUAL -1)
      message(SEND_ERROR "${file} does not hold\n${line}")
    endif()
  endforeach()
endfunction()
expect(Proc/Effects/Lumetta/CMakeLists.txt "  Lustre.cpp\n  OilPaint.cpp\n" "  WhiteBalance.cpp\n  ZoomBurst.cpp)\n")
expect(Proc/Effects/Lumetta/Registrator.cpp "    Do(WhiteBalance) \\\n    Do(Lustre) \\\n    Do(ZoomBurst)\n//")
expect(Proc/Settings/Types/StyleTypes.cpp "    Do(SettingsEffectEmpty) \\\n    Do(SettingsEffectLustre) \\\n")
expect(Proc/Settings/Types/ShapeTypes.cpp " \\\n    Do(SettingsEffectZoomBurst)\n//"
  "SettingsEffectZoomBurst.h\"\n#include \"Proc/Settings/Types/DefineTypes.h\"")
expect(Tests/CMakeLists.txt "    Proc/Effects/Lumetta/LustreTest.cpp\n    Proc/Effects/Lumetta/OilPaintTest.cpp\n")
expect(Tests/Proc/Effects/Lumetta/RegistratorTest.cpp
  "\"SettingsEffectLustre\", \"one\"},\n    {\"SettingsEffectZoomBurst\", \"one\"},\n}")

# What it refuses, and leaves alone.
foreach(call Lustre lustre "Pencil;landscape" "")
  execute_process(COMMAND ${python} ${work_dir}/Scripts/new-effect ${call} RESULT_VARIABLE code ERROR_VARIABLE said)
  if(code EQUAL 0 OR NOT said MATCHES "new-effect")
    message(SEND_ERROR "new-effect ${call} is not refused: ${said}")
  endif()
endforeach()
if(EXISTS ${work_dir}/Proc/Effects/Lumetta/Pencil.cpp)
  message(SEND_ERROR "A refused call has written a file")
endif()

foreach(source Proc/Effects/Lumetta/Lustre.cpp Proc/Settings/Types/StyleTypes.cpp
    Tests/Proc/Effects/Lumetta/LustreTest.cpp)
  execute_process(COMMAND ${compiler} -std=c++20 -Wall -Wextra -Wconversion -Werror -fsyntax-only -I${work_dir}
    -I${source_dir} ${work_dir}/${source} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
