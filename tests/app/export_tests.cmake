# What the package holds is not compared here, but that it is complete and counted.
set(pair_summary "/files/pair.rpk\nparts +2\noccurrences +[34]\nreferences +1\nsurfaces +9\ntriangles +[0-9]+\n")
string(APPEND pair_summary "left out +0\npackage +[0-9]+ bytes\nseconds +read .*, tessellate .*, plug-in .*\n$")
add_standin_test(export ARGS export ${pair} pair.rpk EXIT 0 OUTPUT "${pair_summary}" WRITES pair.rpk)
add_standin_test(export_over_old SETUP "file(WRITE \"\${WORK}/pair.rpk\" \"old\")"
  ARGS export ${pair} pair.rpk EXIT 0 OUTPUT "${pair_summary}")
add_standin_test(export_options
  ARGS export ${pair} pair.rpk --no-nurbs --up -z --quality 0.9 --shared-materials --code-page 932
  EXIT 0 OUTPUT "${pair_summary}" WRITES pair.rpk
  CHECK [[
file(STRINGS "${WORK}/pair.rpk" lines LIMIT_COUNT 20)
if(NOT lines MATCHES "^//---vantor:dal:5---.*\"import_up_vector\" 5,")
  fail("the settings did not reach the plug-in: ${lines}")
endif()]])
# A component of a top-level part moves; the frame file is asked for, read and written.
add_standin_test(export_motion
  SETUP [[
file(WRITE "${WORK}/m.fra" "parts: 1\nframes: 2\n")
foreach(frame 0 1)
  file(APPEND "${WORK}/m.fra" "MaFrame ${frame}\n")
  foreach(id RANGE 1 20)
    file(APPEND "${WORK}/m.fra" "Part: 1 (${id}) 1 0 0 0 1 0 0 0 1 ${frame} 0 0\n")
  endforeach()
endforeach()]]
  ARGS export ${pair} pair.rpk --no-nurbs --fra m.fra EXIT 0 OUTPUT "${pair_summary}" WRITES pair.rpk
  CHECK [[
file(STRINGS "${WORK}/pair.rpk" lines REGEX "fbx_animation")
if(NOT lines)
  fail("the motion did not reach the package")
endif()]])
add_standin_test(frame_file_missing ARGS export ${pair} out.rpk --fra absent.fra EXIT 3
  ERROR "^creo-standin: [^\n]*/absent.fra: No such file or directory\n$")
add_standin_test(export_to_null ARGS export ${pair} /dev/null EXIT 0 OUTPUT "/dev/null\nparts +2\nsurfaces +9\n")

# Models that cannot be opened.
add_standin_test(model_missing ARGS export absent.step out.rpk EXIT 3
  ERROR "^creo-standin: [^\n]*/absent.step: No such file or directory\n$")
add_standin_test(model_folder ARGS export . out.rpk EXIT 3 ERROR "^creo-standin: [^\n]*: Is a directory\n$")
add_standin_test(model_no_step SETUP "file(WRITE \"\${WORK}/text.step\" \"this is no STEP file\\n\")"
  ARGS export text.step out.rpk EXIT 3 ERROR "^creo-standin: [^\n]*/text.step: [^\n]+\n$")
add_standin_test(model_empty SETUP "file(WRITE \"\${WORK}/empty.step\" \"\")"
  ARGS export empty.step out.rpk EXIT 3 ERROR "^creo-standin: [^\n]*/empty.step: [^\n]+\n$")
add_standin_test(overlay_missing ARGS export ${pair} out.rpk --overlay absent.json EXIT 3
  ERROR "^creo-standin: [^\n]*/absent.json: No such file or directory\n$")
add_standin_test(overlay_broken SETUP "file(WRITE \"\${WORK}/broken.json\" \"{\")"
  ARGS export ${pair} out.rpk --overlay broken.json EXIT 3 ERROR "^creo-standin: [^\n]*/broken.json: [^\n]+\n$")
add_standin_test(overlay_beside
  SETUP "file(COPY \"\${PAIR}\" DESTINATION \"\${WORK}\")\nfile(WRITE \"\${WORK}/pair.json\" \"{\")"
  ARGS export pair.step out.rpk EXIT 3 ERROR "^creo-standin: [^\n]*/pair.json: [^\n]+\n$")
add_standin_test(representation_unknown ARGS export ${pair} out.rpk --representation light EXIT 2
  ERROR "^creo-standin: [^\n]*pair.step: has no representation \"light\"\n$")

# Outputs that cannot be written.
add_standin_test(output_folder ARGS export ${pair} . EXIT 4 ERROR "^creo-standin: [^\n]*: Is a directory\n$")
add_standin_test(output_folder_missing ARGS export ${pair} absent/out.rpk EXIT 4
  ERROR "^creo-standin: [^\n]*/absent/out.rpk: No such file or directory\n$")
string(REPEAT "long-name/" 30 long_path)
add_standin_test(output_path_long ARGS export ${pair} ${long_path}out.rpk EXIT 4
  ERROR "^creo-standin: [^\n]*out.rpk: the path has [0-9]+ characters, the host takes 259 at most\n$")
add_standin_test(output_read_only ARGS export ${pair} /proc/version EXIT 4
  ERROR "^creo-standin: /proc/version: [^\n]+\n$")
add_standin_test(output_full SETUP "file(CREATE_LINK /dev/full \"\${WORK}/out.rpk\" SYMBOLIC)"
  ARGS export ${pair} out.rpk EXIT 4 ERROR "^creo-standin: [^\n]*/out.rpk: No space left on device\n$")
add_standin_test(output_is_model SETUP "file(COPY \"\${PAIR}\" DESTINATION \"\${WORK}\")"
  ARGS export pair.step ./pair.step EXIT 2 ERROR "^creo-standin: [^\n]*pair.step: would be overwritten by the package\n$"
  CHECK [[
file(SIZE "${WORK}/pair.step" size)
if(size EQUAL 0)
  fail("the model is gone")
endif()]])

# Plug-ins that are none, and ones that do wrong.
add_standin_test(plugin_missing ARGS --plugin absent.so export ${pair} out.rpk EXIT 4
  ERROR "^creo-standin: [^\n]*/absent.so: the plug-in cannot be loaded: [^\n]*No such file or directory\n$")
add_standin_test(plugin_no_library SETUP "file(WRITE \"\${WORK}/text.so\" \"no library\")"
  ARGS export ${pair} out.rpk --plugin text.so EXIT 4
  ERROR "^creo-standin: [^\n]*/text.so: the plug-in cannot be loaded: [^\n]+\n$")
add_standin_test(plugin_without_entries ARGS export ${pair} out.rpk --plugin $<TARGET_FILE:plugin_without_entries> EXIT 4
  ERROR "^creo-standin: [^\n]*: is not a plug-in: it has no entry user_initialize_plus\n$")
add_standin_test(plugin_with_missing_symbol
  ARGS export ${pair} out.rpk --plugin $<TARGET_FILE:plugin_with_missing_symbol> EXIT 4
  ERROR "^creo-standin: [^\n]*: the plug-in cannot be loaded: [^\n]*rendaraTestNobodyHasThis[^\n]*\n$")
add_standin_test(plugin_refuses ARGS export ${pair} out.rpk --plugin $<TARGET_FILE:refusing_plugin> EXIT 4
  ERROR "^creo-standin: [^\n]*: the plug-in refused to start: user_initialize_plus gave -1\n$")
add_standin_test(package_cut ARGS export ${pair} out.rpk --plugin $<TARGET_FILE:test_plugin> EXIT 4
  ERROR "^creo-standin: [^\n]*/out.rpk: not a complete package: line [0-9]+: [^\n]+\n$")
add_standin_test(export_interrupted ARGS export ${pair} out.rpk --plugin $<TARGET_FILE:interrupted_plugin>
  EXIT "Subprocess terminated")

# Snapshots. What lies beside one was applied when it was made.
set(pair_snapshot "/files/pair.snap\nparts +2\nsurfaces +9\ntriangles +[0-9]+\nleft out +0\nsnapshot +[0-9]+ bytes\n$")
add_standin_test(snapshot ARGS snapshot ${pair} pair.snap --quality 0.5 EXIT 0 OUTPUT "${pair_snapshot}" WRITES pair.snap)
set(make_snapshot [[
execute_process(COMMAND "${PROGRAM}" snapshot "${PAIR}" pair.snap --code-page 932
  WORKING_DIRECTORY "${WORK}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(WRITE "${WORK}/pair.json" "{")]])
add_standin_test(snapshot_export SETUP "${make_snapshot}"
  ARGS export pair.snap pair.rpk EXIT 0 OUTPUT "${pair_summary}" WRITES pair.rpk)
add_standin_test(snapshot_prompt SETUP "${make_snapshot}" ARGS EXIT 0 WRITES pair.rpk
  INPUT "open pair.snap\nanswer save pair.rpk\nrun \"Rendara Export\"\n")
add_standin_test(snapshot_with_overlay SETUP "${make_snapshot}" ARGS export pair.snap out.rpk --overlay pair.json EXIT 3
  ERROR "^creo-standin: [^\n]*/pair.json: [^\n]+\n$")
add_standin_test(snapshot_is_model SETUP "${make_snapshot}" ARGS snapshot pair.snap ./pair.snap EXIT 2
  ERROR "^creo-standin: [^\n]*pair.snap: would be overwritten by the snapshot\n$")
add_standin_test(snapshot_cut
  SETUP [[
string(ASCII 13 10 line_break)
file(WRITE "${WORK}/cut.snap" "RDSNAP${line_break}")]]
  ARGS export cut.snap out.rpk EXIT 3 ERROR "^creo-standin: [^\n]*/cut.snap: the snapshot is cut short\n$")
add_standin_test(snapshot_folder_missing ARGS snapshot ${pair} absent/out.snap EXIT 4
  ERROR "^creo-standin: [^\n]*/absent/out.snap: No such file or directory\n$")
add_standin_test(snapshot_full SETUP "file(CREATE_LINK /dev/full \"\${WORK}/out.snap\" SYMBOLIC)"
  ARGS snapshot ${pair} out.snap EXIT 4 ERROR "^creo-standin: [^\n]*/out.snap: No space left on device\n$")
add_standin_test(snapshot_plugin_refuses ARGS snapshot ${pair} out.snap --plugin $<TARGET_FILE:refusing_plugin> EXIT 4
  ERROR "^creo-standin: [^\n]*: the plug-in refused to start: user_initialize_plus gave -1\n$")
