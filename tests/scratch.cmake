# Read by ctest itself when it starts: the scratch folders of all tests lie in memory, where there is room for them and
# programs may be run. A busy disk holds tests up. TMPDIR goes before it.
if(NOT DEFINED ENV{TMPDIR})
    execute_process(
        COMMAND sh -c "f=$(mktemp /dev/shm/ravelin-XXXXXX) && echo exit >$f && chmod +x $f && $f; s=$?; rm -f $f
                       [ $s = 0 ] && [ $(df -Pk /dev/shm | awk 'NR==2 {print $4}') -gt 1000000 ]"
        RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
    if(NOT failed)
        set(ENV{TMPDIR} /dev/shm)
    endif()
endif()
