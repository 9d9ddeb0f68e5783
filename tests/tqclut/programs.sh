#!/bin/sh
# tqclut's programs as a script runs them: argument handling, exit codes, standard
# output and error, --dvhome, on real files in a temporary folder.
# usage: programs.sh <source-folder> native <tqclut>
#        programs.sh <source-folder> wine <wine-run> <prefix> <tqclut.exe>
set -u
source_dir=$1 mode=$2
shift 2
# No dot in the folder: a reference file's name replaces every "." of the path.
work=$(mktemp -d "${TMPDIR:-/tmp}/tqclutXXXXXX")
trap 'rm -rf "$work"' EXIT
if [ "$mode" = wine ]; then
  wine_run=$1 prefix=$2 program=$3
  path() { printf 'Z:%s' "$1" | tr / '\\'; }
  tqclut() { timeout 120 "$wine_run" "$prefix" "$program" "$@"; }
else
  program=$1
  path() { printf '%s' "$1"; }
  tqclut() { timeout 60 "$program" "$@"; }
fi

failures=0
fail() { printf 'FAIL %s\n' "$*"; failures=$((failures + 1)); }
# expect <exit code> <name> <command...>: runs tqclut, keeps $out and $err.
expect() {
  want=$1 name=$2
  shift 2
  tqclut "$@" >"$work/out" 2>"$work/err"
  got=$?
  out=$(tr -d '\r' <"$work/out") err=$(tr -d '\r' <"$work/err")
  if [ "$got" -ne "$want" ]; then
    printf 'FAIL %s: exit code %s, expected %s; stdout: %s; stderr: %s\n' "$name" "$got" "$want" "$out" "$err"
    failures=$((failures + 1))
  fi
}
# has <name> <text> <pattern>
has() {
  printf '%s\n' "$2" | grep -q -- "$3" || { printf 'FAIL %s: no "%s" in: %s\n' "$1" "$3" "$2"; failures=$((failures + 1)); }
}

classic=$work/QLT830_colors.clut
cp "$source_dir/data/QLT830_colors.clut" "$classic"
cp "$source_dir/data/QLT830_highperformance.clut" "$work/hp.clut"
cp "$classic" "$work/copy.clut"

expect 0 help --help
has help "$out" "tqclut check \[--json\] \[--recursive\] PATH"
expect 0 "-h" -h
has "-h" "$out" "^usage: tqclut"
expect 2 "no command"
has "no command" "$err" "^usage: tqclut"
expect 0 version --version
has version "$out" "^tqclut [0-9]*\.[0-9]*\.[0-9]*$"
expect 0 "help check" help check
has "help check" "$out" "^usage: tqclut \[--dvhome FOLDER\] check"
expect 0 "help help" help help
has "help help" "$out" "^usage: tqclut help \[COMMAND\]"
expect 2 "unknown option" check --jsn "$(path "$classic")"
has "unknown option" "$err" '^tqclut: unknown option "--jsn"; usage: tqclut check'
cd "$work" && cp "$classic" ./-x.clut
expect 1 "-- ends the options" check -- -x.clut
has "-- ends the options" "$out" "^-x.clut$"
expect 0 "check hp" check "$(path "$work/hp.clut")"
has "check hp" "$out" " \([0-9]*\) of \1 checks pass$"
expect 1 "check classic" check --json "$(path "$classic")" "$(path "$work/hp.clut")"
has "check classic" "$out" '"findings":0}],"summary":{"tables":2,"clean":1,"with_findings":1,"unreadable":0}}$'

expect 2 "bad colour" set "$(path "$work/copy.clut")" 23 "#GGHHII"
has "bad colour" "$err" '^tqclut: "#GGHHII" is not a colour'
[ "$(printf '%s\n' "$err" | wc -l)" -eq 1 ] || { printf 'FAIL bad colour: more than one line: %s\n' "$err"; failures=$((failures + 1)); }
cmp -s "$classic" "$work/copy.clut" || { echo "FAIL bad colour: the file changed"; failures=$((failures + 1)); }
expect 2 "missing" show "$(path "$work/missing.clut")"
has missing "$err" "missing.clut: no such file"

# A report that cannot be written is an error.
tqclut check "$(path "$classic")" >/dev/full 2>"$work/err"
[ $? -eq 2 ] || fail "output to a full disk: exit code not 2"
# Only regular files are read or written: a FIFO blocks, a device never ends.
mkfifo "$work/fifo"
for args in "export $(path "$classic") $(path "$work/fifo")" "export $(path "$classic") $(path /dev/zero)" \
    "import $(path /dev/zero) $(path "$work/copy.clut")" "check $(path "$work/fifo")"; do
  # shellcheck disable=SC2086 # the words of $args are the arguments
  expect 2 "$args" $args
  has "$args" "$err" "is not a regular file"
done

expect 0 report report "$(path "$classic")" -o "$(path "$work/report.html")"
head -n 1 "$work/report.html" | grep -q '^<!DOCTYPE html>' || fail "report: no HTML page in the file given"

expect 0 set set "$(path "$work/copy.clut")" 23 "#808080"
expect 1 diff diff "$(path "$classic")" "$(path "$work/copy.clut")"
has diff "$out" "^ 23  #000000     -> #808080      Process Display Background$"
expect 0 export export "$(path "$classic")" "$(path "$work/colours.ini")"
expect 0 import import "$(path "$work/colours.ini")" "$(path "$work/copy.clut")"
expect 0 "diff after import" diff "$(path "$classic")" "$(path "$work/copy.clut")"

# An old table with its reference and a copy in the toolkit's home (--dvhome after the command).
mkdir -p "$work/home/etc"
sed 's/Version=93.07/Version=93.04/' "$classic" >"$work/old.clut"
cp "$work/old.clut" "$work/home/etc/old.clut"
cp "$classic" "$work/old\$clut"
expect 0 upgrade upgrade "$(path "$work/old.clut")" --dvhome "$(path "$work/home")"
has upgrade "$out" "version 93.04 -> 93.07 (changed colours taken from old\$clut); the toolkit's copy .*old.clut too$"
cmp -s "$work/old.clut" "$work/home/etc/old.clut" || fail "upgrade: the toolkit's copy was not refreshed"
[ -z "$err" ] || fail "upgrade: stderr: $err"

[ "$failures" -eq 0 ] && echo "tqclut programs ($mode): all checks passed"
exit "$failures"
