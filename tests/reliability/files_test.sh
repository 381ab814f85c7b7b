#!/usr/bin/env bash
# What becomes of result files when something goes wrong: full disks, folders without permission, files in the wrong places,
# runs that are killed, two runs at once. An earlier result stays whole, and one line says what happened.
#   files_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=../integration/cli/cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/../integration/cli/cli_test_support.sh"
trap 'umount "$work"/disk 2>/dev/null; rm -rf "$work"' EXIT

skip() { echo "skipped $1"; }

# --- helpers -----------------------------------------------------------------------------------------------------------

content() { (cd "$1" && find . -type f -print0 | sort -z | xargs -0r sha256sum); }
earlier_result() {  # earlier_result RANKS FOLDER: a small one, to be kept
  rm -rf "$2"
  run "$1" gradient box:2,2,2 --field "x" --method rbf --span 5 -o "$2"
  check "an earlier result in $2" exited 0
  content "$2" >"$work/earlier"
}
is_kept() { [ "$(content "$1")" = "$(cat "$work/earlier")" ]; }
one_line() { [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]; }

refused() {  # refused NAME TEXT FOLDER: the run before this ended in order, and the folder is as it was
  check "$1: exit code 2" exited 2
  check "$1: one line" one_line
  check "$1: says what" contains <(grep '^zyngrad: ' stderr) "$2"
  check "$1: the earlier result is whole" is_kept "$3"
}

# As run, in a shell that has done something to itself before: run_after PREPARATION RANKS ARGS...
run_after() {
  local preparation=$1 ranks=$2
  shift 2
  local command=(timeout 60 "$mpirun" -n "$ranks" bash -c "$preparation"'; exec "$0" "$@"' "$zyngrad" "$@")
  [ "$ranks" = 1 ] && command=(timeout 60 bash -c "$preparation"'; exec "$0" "$@"' "$zyngrad" "$@")
  # Without shared memory, whose file would be too large, too.
  OMPI_MCA_btl=self,tcp "${command[@]}" >stdout 2>stderr </dev/null
  code=$?
}

# --- a disk that takes no more -------------------------------------------------------------------------------------------

# The system refuses to let a file grow: what a full disk does, and anyone can ask for it.
limit() { echo "trap '' XFSZ; ulimit -f $1"; }  # limit KIBIBYTES
earlier_result 1 old
for case in "1:gradient box:6,6,6 --field x" "8:gradient box:6,6,6 --field x" "64:gradient box:6,6,6 --field x*y" \
  "2:faces box:6,6,6 --field x --group inner" "8:faces box:6,6,6 --field x --group inner" \
  "2:points box:6,6,6 --field x --body x-0.5" "2:check box:4,4,4" "8:study box:3,3,3 --method plain"; do
  # shellcheck disable=SC2086
  run_after "$(limit "${case%%:*}")" 1 ${case#*:} -o old
  refused "no file over ${case%%:*} KiB, ${case#*:}" "File too large" old
done
run_after 'if [ "$OMPI_COMM_WORLD_RANK" = 1 ]; then '"$(limit 8)"'; fi' 2 gradient box:8,8,8 --field x -o old
refused "no file over 8 KiB on one of two ranks" "File too large" old
run_after "$(limit 4)" 1 gradient box:6,6,6 --field x -o new/folder
check "no file over 4 KiB in a new folder: exit code 2" exited 2
check "no file over 4 KiB in a new folder: nothing is left of it" [ ! -e new ]

for command in "--help" "info box:3,3,3" "explain box:3,3,3 --cell 14"; do
  # shellcheck disable=SC2086
  timeout 60 "$zyngrad" $command >/dev/full 2>stderr
  code=$?
  check "$command on a full standard output: exit code 2" exited 2
  check "$command on a full standard output: says so" [ "$(cat stderr)" = "zyngrad: cannot write to standard output" ]
done

mkdir disk
if mount -t tmpfs -o size=128k,mode=755 none disk 2>/dev/null; then
  for ranks in 1 2; do
    earlier_result $ranks disk/old
    run $ranks gradient box:9,9,9 --field "x*y" -o disk/old
    refused "full disk, $ranks ranks" "No space left on device" disk/old
    dd if=/dev/zero of=disk/rest bs=1k 2>/dev/null
    run $ranks gradient box:2,2,2 --field "x" --method rbf --span 7 -o disk/old
    refused "disk full from the beginning, $ranks ranks" "No space left on device" disk/old
    run $ranks gradient box:2,2,2 --field "x" -o disk/new
    check "disk full from the beginning, new folder, $ranks ranks: exit code 2" exited 2
    check "disk full from the beginning, new folder, $ranks ranks: nothing is left of it" [ ! -e disk/new ]
    rm disk/rest
  done
  # --- nothing may be written ---
  mount -o remount,ro disk
  run 1 gradient box:2,2,2 --field x -o disk/old
  refused "read-only disk" "Read-only file system" disk/old
  run 1 gradient box:2,2,2 --field x -o disk/new
  check "read-only disk, new folder: exit code 2" exited 2
  check "read-only disk, new folder: says what" contains stderr "Read-only file system"
  umount disk
else
  skip "full and read-only disk: no file system can be mounted here"
fi

# --- folders without permission ------------------------------------------------------------------------------------------

chmod 755 "$work"
unprivileged=()
[ "$(id -u)" = 0 ] && unprivileged=(setpriv --reuid=65534 --regid=65534 --clear-groups --)
if "${unprivileged[@]}" "$zyngrad" --version >/dev/null 2>&1; then
  earlier_result 1 kept
  chmod 555 kept
  "${unprivileged[@]}" "$zyngrad" gradient box:2,2,2 --field x -o kept >stdout 2>stderr
  code=$?
  refused "folder without permission" "kept/unfinished.part\": Permission denied" kept
  "${unprivileged[@]}" "$zyngrad" gradient box:2,2,2 --field x -o kept/new >stdout 2>stderr
  code=$?
  refused "folder in a folder without permission" "kept/new\": Permission denied" kept
  chmod 755 kept
else
  skip "folder without permission: zyngrad cannot be run by another user"
fi

# --- things in the wrong places ------------------------------------------------------------------------------------------

for ranks in 1 2; do
  earlier_result $ranks old
  for place in unfinished.part gradient.folder/results.json gradient.folder/log.rank0.txt \
    gradient.folder/settings.rank0.rbf; do
    rm -rf wrong-place
    cp -r old wrong-place
    name=${place#gradient.folder/}
    rm -rf "wrong-place/$name"
    if [ "$place" = "$name" ]; then echo "mine" >"wrong-place/$name"; else mkdir "wrong-place/$name"; fi
    content wrong-place >earlier
    run $ranks gradient box:3,3,3 --field "x*y" -o wrong-place
    refused "something in the place of $name, $ranks ranks" "$name" wrong-place
    check "something in the place of $name, $ranks ranks: it is still there" [ -e "wrong-place/$name" ]
  done
done
earlier_result 1 old
echo "mine" >old/gradient
content old >earlier
run 2 gradient box:3,3,3 --field "x*y" -o old
refused "a file in the place of the folder of pieces" 'old/gradient"' old
earlier_result 2 old
rm old/gradient/gradient.0001.vtu
mkdir old/gradient/gradient.0001.vtu
content old >earlier
run 2 gradient box:3,3,3 --field "x*y" -o old
refused "a folder in the place of a piece" 'old/gradient/gradient.0001.vtu": it is a folder' old

# --- killed while it writes ----------------------------------------------------------------------------------------------

survives() {  # survives NAME FOLDER: after a run that was killed; the next one clears up
  check "$1: the earlier result is whole" [ "$(content "$2" | grep -v ' ./unfinished.part/')" = "$(cat earlier)" ]
  check "$1: has left unfinished files" [ -e "$2/unfinished.part/lock" ]
  run 1 gradient box:2,2,2 --field "y" --method rbf --span 6 -o "$2"
  check "$1: the next run succeeds" exited 0
  check "$1: the next run leaves its own files" \
    [ "$(ls "$2" | tr '\n' ' ')" = "gradient.vtu log.rank0.txt results.json settings.rank0.rbf " ]
}

# The limit on a file's size again; not ignored, its signal ends the process within a write.
for limit in 1 8 100; do
  earlier_result 1 old
  # The shell's own line about the signal goes nowhere.
  { timeout 60 bash -c "ulimit -c 0; ulimit -f $limit"'; exec "$0" "$@"' "$zyngrad" gradient box:9,9,9 --field "x" \
    -o old >stdout 2>stderr; } 2>/dev/null
  code=$?
  check "killed within a write at $limit KiB: by the signal" exited 153
  survives "killed within a write at $limit KiB" old
done

kill_when_there() {  # kill_when_there FILE RANKS: kill -9 of a run into the folder old as soon as the file is there
  local file=$1 ranks=$2 pid victim attempt command=("$zyngrad")
  [ "$ranks" = 1 ] || command=("$mpirun" -n "$ranks" "$zyngrad")
  # A run that has been quicker than this shell does not count.
  for attempt in 1 2 3 4 5; do
    earlier_result "$ranks" old
    "${command[@]}" gradient box:40,40,40 --field "x*y" -o old >stdout 2>stderr &
    pid=$!
    victim=$pid
    until [ "$ranks" = 1 ] || ! kill -0 $pid 2>/dev/null; do
      victim=$(ranks_of $pid | sed -n "${ranks}p")
      [ -z "$victim" ] || break
    done
    until [ -e "$file" ] || ! kill -0 $pid 2>/dev/null; do :; done
    kill -9 "$victim"
    local begin=$SECONDS
    wait $pid 2>/dev/null
    code=$?
    seconds=$((SECONDS - begin))
    [ ! -e old/unfinished.part ] || return
  done
}
for file in lock log.rank0.txt gradient.vtu; do
  kill_when_there old/unfinished.part/$file 1
  check "kill -9 at $file: exit code of the signal" exited 137
  survives "kill -9 at $file" old
done
for file in lock gradient/gradient.0000.vtu gradient/gradient.0001.vtu; do
  kill_when_there old/unfinished.part/$file 2
  check "kill -9 of one of two ranks at $file: an error" [ "$code" != 0 ]
  check "kill -9 of one of two ranks at $file: the other ends within 10 s ($seconds s)" [ $seconds -le 10 ]
  survives "kill -9 of one of two ranks at $file" old
done

# --- two runs at once ----------------------------------------------------------------------------------------------------

earlier_result 1 old
"$zyngrad" gradient box:12,12,12 --field "x" --method rbf --span 50 -o old >first.out 2>first.err &
first=$!
until [ -s old/unfinished.part/lock ] || ! kill -0 $first 2>/dev/null; do :; done
kill -STOP $first  # it waits for the others to come and go
run 1 gradient box:2,2,2 --field x --method rbf --span 7 -o old
second=$code
cp stderr second.err
run 2 faces box:3,3,3 --field x --group inner --span 8 -o old
third=$code
cp stderr third.err
check "while two more runs ask for its folder: the earlier result is whole" \
  [ "$(content old | grep -v ' ./unfinished.part/')" = "$(cat earlier)" ]
kill -CONT $first
wait $first
code=$?
check "first of two runs in a folder: exit code 0" exited 0
check "second run in a folder: exit code 2" [ $second = 2 ]
check "second run in a folder: one line that says why" \
  grep -q "^zyngrad: the output folder \"old\" is in use by another run (process $first on " second.err
check "third run in a folder, of another kind: exit code 2" [ $third = 2 ]
check "third run in a folder, of another kind: one line" [ "$(grep -c '^zyngrad: ' third.err)" = 1 ]
check "the folder has the settings of the first run" contains old/settings.rank0.rbf "Span              = 50"
check "the folder has the results of the first run" contains old/results.json '"span": 50.0'
check "the folder has nothing else" \
  [ "$(ls old | tr '\n' ' ')" = "gradient.vtu log.rank0.txt results.json settings.rank0.rbf " ]

# Many at the same moment, each with settings of its own: one or the other gets in, and what is there at the end is of one.
spans="11 12 13 14 15 16 17 18"
for span in $spans; do
  (
    "$zyngrad" gradient box:3,3,3 --field x --method rbf --span "$span" -o crowd >"crowd.$span.out" 2>"crowd.$span.err"
    echo $? >"crowd.$span.code"
  ) &
done
wait
codes=$(cat crowd.*.code | sort -u | tr '\n' ' ')
check "eight runs at once: some succeed, others are refused ($codes)" [ "$codes" = "0 " -o "$codes" = "0 2 " ]
check "eight runs at once: who is refused is told why" \
  [ "$(cat crowd.*.err | grep -c 'is in use by another run')" = "$(cat crowd.*.code | grep -c 2)" ]
span=$(grep -o '"span": [0-9]*' crowd/results.json | sed 's/.* //')
check "eight runs at once: the result is of one that succeeded" [ "$(cat "crowd.$span.code")" = 0 ]
check "eight runs at once: with its settings" contains crowd/settings.rank0.rbf "Span              = $span"
check "eight runs at once: nothing unfinished" [ ! -e crowd/unfinished.part ]

# At the same time in folders of their own, from one working folder: each as if it were alone.
for span in 5 500; do
  run 2 gradient box:6,6,6 --field "x^2*y" --method rbf --span $span -o alone-$span
  "$mpirun" -n 2 "$zyngrad" gradient box:6,6,6 --field "x^2*y" --method rbf --span $span -o beside-$span >/dev/null 2>&1 &
done
wait
numbers() { grep -E '"(l1|l2|max|span)"' "$1/results.json"; }
for span in 5 500; do
  check "two runs in two folders, span $span: as alone" [ "$(numbers alone-$span)" = "$(numbers beside-$span)" ]
  check "two runs in two folders, span $span: settings" \
    [ "$(cat beside-$span/settings.rank?.rbf | grep -c "^Span              = $span\$")" = 2 ]
done

finish
