#!/usr/bin/env bash
# What becomes of files when something goes wrong: full disks, folders without permission, files in the wrong places,
# runs that are killed or interrupted, two runs at once. Files of the user and an earlier result stay whole, and one line
# says what happened.
#   files_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=../integration/cli/cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/../integration/cli/cli_test_support.sh"
trap 'umount "$work"/disk 2>/dev/null; rm -rf "$work" "$sessions"' EXIT

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
for size in 1 8 64; do
  run_after "$(limit $size)" 1 gradient box:6,6,6 --field "x*y" -o old
  refused "no file over $size KiB, gradient" "File too large" old
done
for case in "2:faces box:6,6,6 --field x --group inner" "8:faces box:6,6,6 --field x --group inner" \
  "2:points box:6,6,6 --field x --body x-0.5" "2:check box:4,4,4" "8:study box:3,3,3 --method plain"; do
  # shellcheck disable=SC2086
  run_after "$(limit "${case%%:*}")" 1 ${case#*:} -o new
  check "no file over ${case%%:*} KiB, ${case#*:}: exit code 2" exited 2
  check "no file over ${case%%:*} KiB, ${case#*:}: says what" contains stderr "File too large"
  check "no file over ${case%%:*} KiB, ${case#*:}: nothing is left of it" [ ! -e new ]
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

# Results count only when all that was printed has arrived.
for output in "full:>/dev/full" "closed:>&-" "closed like the others:<&- >&- 2>&-"; do
  earlier_result 1 old
  bash -c '"$0" gradient box:3,3,3 --field "x*y" -o old '"${output#*:}" "$zyngrad" 2>stderr </dev/null
  code=$?
  name="standard output ${output%%:*}"
  check "$name: exit code 2" exited 2
  check "$name: the earlier result is whole" is_kept old
  case $output in
    *2*) ;;
    *) check "$name: says so" [ "$(cat stderr)" = "zyngrad: cannot write to standard output" ] ;;
  esac
  bash -c '"$0" gradient box:3,3,3 --field "x*y" -o new/folder '"${output#*:}" "$zyngrad" 2>stderr </dev/null
  check "$name: no new folder is left" [ ! -e new ]
done

# A reader that goes away: the end is that of other programs, without a word.
for command in "gradient box:3,3,3 --field x*y -o old" "info box:3,3,3" "--help"; do
  earlier_result 1 old
  # shellcheck disable=SC2086
  "$zyngrad" $command 2>stderr | true
  code=${PIPESTATUS[0]}
  # The reader may have gone before the program begins to write, or not quite.
  check "nobody reads, ${command%% *}: ended by the signal or done ($code)" [ "$code" = 141 -o "$code" = 0 ]
  check "nobody reads, ${command%% *}: quiet" [ ! -s stderr ]
  check "nobody reads, ${command%% *}: nothing unfinished" [ ! -e old/unfinished.part ]
  [ "$code" = 0 ] || check "nobody reads, ${command%% *}: the earlier result is whole" is_kept old
done
mkfifo pipe
earlier_result 1 old
"$zyngrad" gradient box:9,9,9 --field "x*y" -o old >pipe 2>stderr &
pid=$!
head -c 0 <pipe  # opens and closes it, long before anything is printed
wait $pid
code=$?
check "the reader has gone: ended by the signal" exited 141
check "the reader has gone: quiet" [ ! -s stderr ]
check "the reader has gone: the earlier result is whole" is_kept old
# Some programs read from a pair of sockets in the place of a pipe.
python3 -c 'import socket, subprocess, sys
ours, theirs = socket.socketpair()
ours.close()
sys.exit(-subprocess.run(sys.argv[1:], stdout=theirs, stderr=open("stderr", "w")).returncode)
' "$zyngrad" info box:3,3,3
code=$?
check "the reader at a socket has gone: ended by the signal" exited 13
check "the reader at a socket has gone: quiet" [ ! -s stderr ]
earlier_result 1 old
("$zyngrad" gradient box:3,3,3 --field "x*y" -o old 2>stderr; echo $? >code) | head -1 >stdout
check "| head -1: quiet" [ ! -s stderr ]
check "| head -1: nothing unfinished" [ ! -e old/unfinished.part ]
check "| head -1: ended by the signal or done" grep -qxE "0|141" code
(trap '' PIPE; "$zyngrad" gradient box:9,9,9 --field "x*y" -o old >pipe 2>stderr; echo $? >code) &
pid=$!
content old >earlier
head -c 0 <pipe
wait $pid
code=$(cat code)
refused "the reader has gone, and the caller ignores that signal" "cannot write to standard output" old

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
  for place in unfinished.part gradient.folder/gradient.json gradient.folder/log.rank0.txt \
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
refused "a folder in the place of a piece" 'old/gradient/gradient.0001.vtu" has changed' old

# --- what belongs to somebody else -----------------------------------------------------------------------------------------

# Nothing that no run has written is replaced or removed, whatever its name.
mkdir -p out/unfinished.part/thesis
touch out/unfinished.part/thesis/ch1.tex
content out >earlier
run 1 gradient nosuch.msh --field x -o out
refused "a folder of the user named unfinished.part" "out/unfinished.part\" is not from a run of zyngrad" out
for ranks in 1 2; do
  run $ranks gradient box:3,3,3 --field x -o out
  refused "a folder of the user named unfinished.part, $ranks ranks" "unfinished.part" out
done
for ranks in 1 2; do
  rm -rf out
  mkdir -p out/gradient
  theirs="log.rank2.txt log.rank3.txt settings.rank2.rbf settings.rank3.rbf gradient/gradient.0002.vtu gradient/gradient.0003.vtu"
  [ $ranks = 2 ] || theirs="$theirs log.rank1.txt settings.rank1.rbf gradient.pvtu gradient/gradient.0000.vtu gradient/gradient.0001.vtu"
  for name in $theirs; do echo "mine, $name" >"out/$name"; done
  content out >earlier
  run $ranks gradient box:3,3,3 --field x -o out
  check "files of the user under names that other runs use, $ranks ranks: exit code 0" exited 0
  check "files of the user under names that other runs use, $ranks ranks: all there" \
    [ "$(content out | grep -Fxf earlier)" = "$(cat earlier)" ]
done

in_the_way() {  # in_the_way RANKS COMMAND NAME...: of the files that the command would write, each in turn
  local ranks=$1 command=$2 name
  shift 2
  for name in "$@"; do
    rm -rf out
    mkdir -p "$(dirname "out/$name")"
    echo "mine" >"out/$name"
    content out >earlier
    # A mesh that is not there: the refusal comes before anything is read.
    # shellcheck disable=SC2086
    run "$ranks" $command -o out
    refused "the user's $name in the way of $command, $ranks ranks" "\"out/$name\": no manifest lists it as written by zyngrad" out
  done
}
in_the_way 1 "gradient nosuch.msh --field x" gradient.vtu gradient.json log.rank0.txt settings.rank0.rbf
in_the_way 2 "gradient nosuch.msh --field x" gradient.pvtu gradient/gradient.0001.vtu log.rank1.txt settings.rank1.rbf
in_the_way 1 "faces nosuch.msh --field x --group inner" faces.vtp
in_the_way 2 "faces nosuch.msh --field x --group inner" faces.pvtp faces/faces.0000.vtp
in_the_way 1 "points nosuch.msh --field x --body x" points.csv points.vtp
in_the_way 1 "check nosuch.msh" check.json check.vtu
in_the_way 1 "study nosuch.msh --method plain" study.json report.html study.md trigonometric-gradient-interior.svg
rm -rf out

# Results that the user has changed, and links to somewhere else.
for ranks in 1 2; do  # replaced by the next run, or removed
  earlier_result 2 old
  echo "<!-- mine -->" >>old/gradient.pvtu
  content old >earlier
  run $ranks gradient box:3,3,3 --field x -o old
  refused "an edited result, next run on $ranks ranks" "\"old/gradient.pvtu\" has changed since" old
done
earlier_result 1 old
echo "mine" >thesis.tex
rm old/gradient.json
ln -s ../thesis.tex old/gradient.json
content old >earlier
run 1 gradient box:3,3,3 --field x -o old
refused "a link in the place of a result" "old/gradient.json\" has changed since" old
check "a link in the place of a result: what it leads to is whole" [ "$(cat thesis.tex)" = mine ]
earlier_result 1 old
mv old/zyngrad-manifest.json manifest
for name in ../thesis.tex "$work/thesis.tex"; do
  sed "s|\"gradient.vtu\"|\"$name\"|" manifest >old/zyngrad-manifest.json
  content old >earlier
  run 1 gradient box:3,3,3 --field x -o old
  refused "a manifest that names $name" "zyngrad-manifest.json\" is not a manifest" old
  check "a manifest that names $name: that file is whole" [ "$(cat thesis.tex)" = mine ]
done
rm old/zyngrad-manifest.json
content old >earlier
run 1 gradient box:3,3,3 --field x -o old
refused "results without a manifest" "no manifest lists it as written by zyngrad" old

# On another number of ranks the results before go, all of them and nothing else.
earlier_result 3 old
echo "mine" >old/gradient/notes.txt
run 1 gradient box:3,3,3 --field x --method plain -o old
check "three ranks, then one: exit code 0" exited 0
check "three ranks, then one: what is there" [ "$(cd old && find . -type f | sort | tr '\n' ' ')" = \
  "./gradient.json ./gradient.vtu ./gradient/notes.txt ./log.rank0.txt ./zyngrad-manifest.json " ]
rm old/gradient/notes.txt
run 2 gradient box:3,3,3 --field x --method plain -o old
run 1 gradient box:3,3,3 --field x --method plain -o old
check "two ranks, then one: the folder of pieces has gone" [ ! -e old/gradient ]

# Earlier versions called the results of three commands results.json. Only what their manifest lists goes.
for ranks in 1 2; do
  for ours in yes no; do
    earlier_result 1 old
    mv old/gradient.json old/results.json
    sed -i 's|"gradient.json"|"results.json"|' old/zyngrad-manifest.json
    [ $ours = yes ] || echo "mine" >>old/results.json
    content old >earlier
    run $ranks gradient box:3,3,3 --field x -o old
    if [ $ours = yes ]; then
      check "results under their earlier name, $ranks ranks: replaced" [ -s old/gradient.json -a ! -e old/results.json ]
    else
      refused "edited results under their earlier name, $ranks ranks" "\"old/results.json\" has changed since" old
    fi
  done
done

# Each command has a folder of its own, and does not write into that of another.
run 1 gradient box:3,3,3 --field x
run 1 faces box:3,3,3 --field x --group inner
check "gradient and faces without -o: both results" \
  [ -s zyngrad-output/gradient/gradient.json -a -s zyngrad-output/faces/faces.json ]
rm -rf zyngrad-output
earlier_result 1 old
for command in "faces nosuch.msh --field x --group inner" "check nosuch.msh"; do
  # shellcheck disable=SC2086
  run 1 $command -o old
  refused "${command%% *} into the folder of gradient" "contains results of zyngrad \"gradient\": choose another one with -o" old
done

# --- killed while it writes ----------------------------------------------------------------------------------------------

survives() {  # survives NAME FOLDER: after a run that was killed; the next one clears up
  check "$1: the earlier result is whole" [ "$(content "$2" | grep -v ' ./unfinished.part/')" = "$(cat earlier)" ]
  check "$1: has left unfinished files" [ -e "$2/unfinished.part/lock" ]
  run 1 gradient box:2,2,2 --field "y" --method rbf --span 6 -o "$2"
  check "$1: the next run succeeds" exited 0
  check "$1: the next run leaves its own files" \
    [ "$(ls "$2" | tr '\n' ' ')" = "gradient.json gradient.vtu log.rank0.txt settings.rank0.rbf zyngrad-manifest.json " ]
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

# At any moment, the last ones above all, in which files are moved: the next run goes on in any case.
earlier_result 1 old
for moment in 0.02 0.05 0.1 0.15 0.2 manifest manifest manifest manifest manifest; do
  "$zyngrad" gradient box:3,3,3 --field "x*${RANDOM}" --method plain -o old >stdout 2>stderr &
  pid=$!
  if [ $moment = manifest ]; then
    until [ -e old/unfinished.part/zyngrad-manifest.json ] || ! kill -0 $pid 2>/dev/null; do :; done
  else
    sleep $moment
  fi
  kill -9 $pid 2>/dev/null
  wait $pid 2>/dev/null
done
run 1 gradient box:3,3,3 --field "x" --method rbf -o old
check "killed at many moments: the next run succeeds" exited 0
check "killed at many moments: the next run leaves its own files" \
  [ "$(ls old | tr '\n' ' ')" = "gradient.json gradient.vtu log.rank0.txt settings.rank0.rbf zyngrad-manifest.json " ]

# --- interrupted ----------------------------------------------------------------------------------------------------------

interrupt_when_there() {  # interrupt_when_there SIGNAL FILE RANKS FOLDER COMMAND...: as soon as the file is there
  local signal=$1 file=$2 ranks=$3 pid command=("$zyngrad")
  [ "$ranks" = 1 ] || command=("$mpirun" -n "$ranks" "$zyngrad")
  # Without job control bash starts what is in the background with SIGINT ignored.
  env --default-signal=INT "${command[@]}" "${@:5}" -o "$4" >stdout 2>stderr </dev/null &
  pid=$!
  until [ -e "$file" ] || ! kill -0 $pid 2>/dev/null; do sleep 0.005; done
  kill -s "$signal" $pid 2>/dev/null
  wait $pid 2>/dev/null
  code=$?
}
# Otherwise mpirun ends its processes without any notice.
kept_timeout=$OMPI_MCA_odls_base_sigkill_timeout
unset OMPI_MCA_odls_base_sigkill_timeout
for signal in INT:130 TERM:143 HUP:129; do
  for file in lock log.rank0.txt gradient.vtu; do
    name="SIG${signal%:*} at $file"
    earlier_result 1 old
    interrupt_when_there "${signal%:*}" old/unfinished.part/$file 1 old gradient box:40,40,40 --field "x*y"
    check "$name: ended by the signal ($code)" exited "${signal#*:}"
    check "$name: quiet" [ ! -s stderr ]
    check "$name: the folder is as it was" is_kept old
    check "$name: nothing unfinished" [ ! -e old/unfinished.part ]
  done
  name="SIG${signal%:*} at two ranks"
  earlier_result 2 old
  # mpirun waits for a second before it passes the signal on: the run has to last longer.
  interrupt_when_there "${signal%:*}" old/unfinished.part/log.rank1.txt 2 old gradient box:64,64,64 --field "x*y"
  check "$name: an error" [ "$code" != 0 ]
  check "$name: no line of ours" [ "$(grep -c '^zyngrad: ' stderr)" = 0 ]
  check "$name: the folder is as it was" is_kept old
  check "$name: nothing unfinished" [ ! -e old/unfinished.part ]
done
export OMPI_MCA_odls_base_sigkill_timeout=$kept_timeout
interrupt_when_there TERM new/folder/unfinished.part/log.rank0.txt 1 new/folder gradient box:40,40,40 --field x
check "SIGTERM in a new folder: nothing is left of it" [ ! -e new ]
mkdir temporary
TMPDIR=$work/temporary interrupt_when_there TERM new/unfinished.part/log.rank0.txt 1 new study box:16,16,16:tet --levels 1
check "SIGTERM, temporary files: nothing is left" [ -z "$(ls temporary)" -a ! -e new ]
(trap '' HUP; exec "$zyngrad" gradient box:20,20,20 --field x -o nohup >stdout 2>stderr) &
pid=$!
until [ -e nohup/unfinished.part/log.rank0.txt ] || ! kill -0 $pid 2>/dev/null; do sleep 0.005; done
kill -HUP $pid
wait $pid
code=$?
check "SIGHUP where the caller ignores it, as nohup does: exit code 0" exited 0

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
check "the folder has the results of the first run" contains old/gradient.json '"span": 50.0'
check "the folder has nothing else" \
  [ "$(ls old | tr '\n' ' ')" = "gradient.json gradient.vtu log.rank0.txt settings.rank0.rbf zyngrad-manifest.json " ]

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
span=$(grep -o '"span": [0-9]*' crowd/gradient.json | sed 's/.* //')
check "eight runs at once: the result is of one that succeeded" [ "$(cat "crowd.$span.code")" = 0 ]
check "eight runs at once: with its settings" contains crowd/settings.rank0.rbf "Span              = $span"
check "eight runs at once: nothing unfinished" [ ! -e crowd/unfinished.part ]

# At the same time in folders of their own, from one working folder: each as if it were alone.
for span in 5 500; do
  run 2 gradient box:6,6,6 --field "x^2*y" --method rbf --span $span -o alone-$span
  "$mpirun" -n 2 "$zyngrad" gradient box:6,6,6 --field "x^2*y" --method rbf --span $span -o beside-$span >/dev/null 2>&1 &
done
wait
numbers() { grep -E '"(l1|l2|max|span)"' "$1/gradient.json"; }
for span in 5 500; do
  check "two runs in two folders, span $span: as alone" [ "$(numbers alone-$span)" = "$(numbers beside-$span)" ]
  check "two runs in two folders, span $span: settings" \
    [ "$(cat beside-$span/settings.rank?.rbf | grep -c "^Span              = $span\$")" = 2 ]
done

finish
