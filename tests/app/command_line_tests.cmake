add_standin_test(help ARGS --help EXIT 0 OUTPUT "--plugin FILE.*--code-page.*export.*run.*Examples:.*creo-standin export pump.step")
add_standin_test(export_help ARGS export --help EXIT 0 OUTPUT "MODEL.*--no-nurbs")
add_standin_test(version ARGS --version EXIT 0 OUTPUT "^creo-standin ${PROJECT_VERSION}\n$")
add_standin_test(mistyped_option ARGS export a.step b.rpk --no-nurb EXIT 2
  ERROR "^creo-standin: unknown option --no-nurb. did you mean --no-nurbs[?]\n$")
add_standin_test(mistyped_command ARGS exprot a.step b.rpk EXIT 2
  ERROR "^creo-standin: unknown command \"exprot\". did you mean export[?]\n$")
add_standin_test(missing_argument ARGS export a.step EXIT 2 ERROR "^creo-standin: OUT is required\n$")
add_standin_test(quality_no_number ARGS export a.step b.rpk --quality fine EXIT 2
  ERROR "^creo-standin: --quality cannot be \"fine\": a number from 0 to 1\n$")
add_standin_test(quality_out_of_range ARGS export a.step b.rpk --quality 1.5 EXIT 2
  ERROR "^creo-standin: --quality cannot be \"1.5\": a number from 0 to 1\n$")
add_standin_test(up_unknown ARGS export a.step b.rpk --up=w EXIT 2
  ERROR "^creo-standin: --up cannot be \"w\": x, y, z, -x, -y, -z\n$")
add_standin_test(messages_missing ARGS --messages . EXIT 2 ERROR "^creo-standin: .: holds no rendara_msg.txt\n$")
add_standin_test(code_page_unknown ARGS export a.step b.rpk --code-page 77 EXIT 2
  ERROR "^creo-standin: code page 77 is not known\n$")

# A plug-in by the file that tells the CAD system of it, with paths relative to that file.
set(application_setup [[
file(MAKE_DIRECTORY "${WORK}/plug in/text")
file(WRITE "${WORK}/plug in/text/rendara_msg.txt" "rendaraSettings\nFrom beside\n#\n#\n")
file(CREATE_LINK "${PLUGIN}" "${WORK}/plug in/plugin.so" SYMBOLIC)
file(WRITE "${WORK}/plug in/creotk.dat" "! comment\r\nname Rendara\r\nSTARTUP dll\r\nexec_file .\\plugin.so\r\ntext_dir .\r\nend\r\n")
file(WRITE "${WORK}/steps.txt" "commands\n")]])
add_standin_test(application SETUP "${application_setup}" ARGS --application "plug in/creotk.dat" run steps.txt EXIT 0
  OUTPUT "Rendara Settings +.From beside.")
foreach(case "endless=name a!has no .end." "spawned=name a~startup spawn~end!.startup. is .spawn." "bare=name a~startup~end!line 2: .startup. has no value"
        "unnamed=startup dll~end!there is no .name.")
  string(REGEX MATCH "^([a-z]+)=([^!]*)!(.*)$" matched "${case}")
  set(message "${CMAKE_MATCH_3}")
  set(name ${CMAKE_MATCH_1})
  string(REPLACE "~" "\\n" content "${CMAKE_MATCH_2}")
  add_standin_test(application_${name} SETUP "file(WRITE \"\${WORK}/a.dat\" \"${content}\\n\")"
    ARGS --application a.dat run - EXIT 2 ERROR "^creo-standin: a.dat: [^\n]*${message}")
endforeach()
