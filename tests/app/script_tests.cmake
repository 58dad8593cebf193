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

# A dialog: in order, over two openings, with a file chosen in between; shown and cancelled without steps.
add_script_test(script_dialog "dialog Values set Slider 40
dialog Values set Axis y
dialog Values set File some file.fra
dialog Values press Browse # which is cancelled
dialog Values press Values_OK
dialog Values press Browse
dialog Values press Values_OK
run Dialog
answer open /tmp/chosen.fra
run Dialog
run Dialog" EXIT 0 OUTPUT "^dialog Values
the plug-in says \"quality 0.40, axis yaxis, file some file.fra\"
dialog Values
the plug-in says \"quality 0.00, axis none, file /tmp/chosen.fra\"
dialog Values
[+]- Values -+[+]
[|] .0.00. -/[+] +[|]O---------[|] [|]
.*
  Quality +spinbox +0.00 +0.00 to 1.00 by 1.00 or 10.00  0 is coarse, 1 is fine.
.*
dialog Values was cancelled
the command gave -3
$")
add_script_test(script_dialog_mistyped "dialog Values set Qualty 0.5
dialog Values press Values_OK
run Dialog
status" EXIT 2 OUTPUT "^dialog Values\ndialog Values was cancelled\n$"
  ERROR "^steps.txt:1: dialog Values set Qualty 0.5: the dialog \"Values\" has no component \"Qualty\". did you mean Quality[?]\n$")
add_script_test(script_dialog_never_open "dialog Valeus press Values_OK
run Dialog" EXIT 2 OUTPUT "cancelled"
  ERROR "^steps.txt:1: dialog Valeus press Values_OK: the dialog was never opened. did you mean Values[?]\n$")

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
