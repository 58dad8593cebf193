# A script file of the lines, run by the plug-in of the tests.
function(add_script_test name lines)
  string(REPLACE "\n" "\\n" escaped "${lines}")
  string(REPLACE "\"" "\\\"" escaped "${escaped}")
  add_standin_test(${name} SETUP "file(WRITE \"\${WORK}/steps.txt\" \"${escaped}\\n\")"
    ARGS run steps.txt --plugin $<TARGET_FILE:test_plugin> ${ARGN})
endfunction()

add_script_test(script_export "open ${pair} # the model
answer save complete.rpk
run Complete
answer cancel
run Complete
run Complete" EXIT 0
  OUTPUT "^opened pair.asm\nwrote [^\n]*/complete.rpk: [^\n]*\n$" WRITES complete.rpk)
add_script_test(script_error "open ${pair}
run 'Complet'
tree" EXIT 2 OUTPUT "^opened pair.asm\n$"
  ERROR "^steps.txt:2: the plug-in has no command \"Complet\". did you mean Complete[?]\n$")
add_script_test(script_model_missing "open absent.step" EXIT 3
  ERROR "^steps.txt:1: [^\n]*/absent.step: No such file or directory\n$")
add_script_test(script_package_cut "open ${pair}
answer save cut.rpk
run Rendara Export" EXIT 4 OUTPUT "^opened pair.asm\n$"
  ERROR "^steps.txt:3: [^\n]*/cut.rpk: not a complete package: [^\n]+\n$" WRITES cut.rpk)
add_script_test(script_misuse "open ${pair}
layer FRONT add axle
run 'Read past'
run 'Leak'
status" EXIT 5 OUTPUT "plug-in: loaded"
  ERROR "^creo-standin: [^\n]*test_plugin[^\n]*: the plug-in misused the session 2 times\n  ProLayeritemLayersGet[^\n]*\n  ProMdlVerstampGet[^\n]*\n$")
add_script_test(script_left_open "open ${pair}
run 'Leave open'
run 'Leave open'
status
run Leak" EXIT 5 OUTPUT "misuse: 1\n  CloseHandle: [^\n]*\n$"
  ERROR "the plug-in misused the session 4 times\n  ProMdlVerstampGet[^\n]*\n  CloseHandle: [^\n]*\n  never given back: the key HKEY_CURRENT_USER.SOFTWARE\n  never given back: the module libc.so.6\n$")
add_script_test(script_crash "open ${pair}
run Crash" EXIT "Segmentation fault|1" OUTPUT "^opened pair.asm\n$" ERROR ".*")

add_standin_test(script_missing ARGS run absent.txt EXIT 2
  ERROR "^creo-standin: absent.txt: No such file or directory\n$")
add_standin_test(script_folder ARGS run . EXIT 2 ERROR "^creo-standin: .: Is a directory\n$")
add_standin_test(standard_input INPUT "open ${pair}\nquit\nnonsense" EXIT 0 OUTPUT "^opened pair.asm\n$")
add_standin_test(standard_input_error INPUT "open ${pair}\nnonsense" EXIT 2 OUTPUT "^opened pair.asm\n$"
  ERROR "^standard input:2: no command \"nonsense\"\n$")

# The plug-in proper: its commands with their texts, a choice between representations, what is left out.
add_standin_test(commands INPUT "commands" EXIT 0
  OUTPUT "Manual selection +\"[^\n\"]+\"  rd_update_unchecked.png\n.*Rendara Export +\"[^\n\"]+\"  rd_export.png\n")
add_standin_test(suppressed_component
  INPUT "open ${pair}\nsuppress axle\nset nurbs off\nanswer save out.rpk\nrun \"Rendara Export\"\ntree" EXIT 0
  OUTPUT "wrote [^\n]*/out.rpk: [23] occurrences, 1 references, 12 triangles\npair.asm.*axle.asm  .suppressed."
  WRITES out.rpk)
