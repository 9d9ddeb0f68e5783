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
# expect <exit code> <out|err> <pattern> <command...>: runs tqclut, keeps $out and $err,
# and looks for the pattern (unless it is empty) in the stream named.
expect() {
  want=$1 stream=$2 pattern=$3
  shift 3
  tqclut "$@" >"$work/out" 2>"$work/err"
  got=$?
  out=$(tr -d '\r' <"$work/out") err=$(tr -d '\r' <"$work/err")
  [ "$got" -eq "$want" ] || fail "tqclut $*: exit code $got, expected $want; stdout: $out; stderr: $err"
  if [ "$stream" = out ]; then text=$out; else text=$err; fi
  [ -z "$pattern" ] || printf '%s\n' "$text" | grep -q -- "$pattern" || fail "tqclut $*: no \"$pattern\" in: $text"
}

classic=$work/QLT830_colors.clut
cp "$source_dir/data/QLT830_colors.clut" "$classic"
cp "$source_dir/data/QLT830_highperformance.clut" "$work/hp.clut"

expect 0 out "tqclut check \[--json\] \[--recursive\] PATH" --help
expect 0 out "^usage: tqclut" -h
expect 2 err "^usage: tqclut"
expect 0 out "^tqclut [0-9]*\.[0-9]*\.[0-9]*$" --version
expect 0 out "^usage: tqclut \[--dvhome FOLDER\] check" help check
expect 0 out "^usage: tqclut help \[COMMAND\]" help help
expect 0 out "^usage: tqclut \[--dvhome FOLDER\] set FILE INDEX COLOUR$" set --help
cd "$work" && cp "$classic" ./-x.clut
expect 1 out "^-x.clut$" check -- -x.clut  # "--" ends the options
expect 0 out " \([0-9]*\) of \1 checks pass$" check "$(path "$work/hp.clut")"
expect 1 out '"findings":0}],"summary":{"tables":2,"clean":1,"with_findings":1,"unreadable":0}}$' \
  check --json "$(path "$classic")" "$(path "$work/hp.clut")"

# A report that cannot be written is an error.
tqclut check "$(path "$classic")" >/dev/full 2>"$work/err"
[ $? -eq 2 ] || fail "output to a full disk: exit code not 2"
# Only regular files are read or written: a FIFO blocks, a device never ends.
mkfifo "$work/fifo"
for args in "export $(path "$classic") $(path "$work/fifo")" "export $(path "$classic") $(path /dev/zero)" \
    "import $(path /dev/zero) $(path "$classic")" "check $(path "$work/fifo")"; do
  # shellcheck disable=SC2086 # the words of $args are the arguments
  expect 2 err "is not a regular file" $args
done

# An old table with its reference and a copy in the toolkit's home (--dvhome after the command).
mkdir -p "$work/home/etc"
sed 's/Version=93.07/Version=93.04/' "$classic" >"$work/old.clut"
cp "$work/old.clut" "$work/home/etc/old.clut"
cp "$classic" "$work/old\$clut"
expect 0 out "version 93.04 -> 93.07 (changed colours taken from old\$clut); the toolkit's copy .*old.clut too$" \
  upgrade "$(path "$work/old.clut")" --dvhome "$(path "$work/home")"
cmp -s "$work/old.clut" "$work/home/etc/old.clut" || fail "upgrade: the toolkit's copy was not refreshed"
[ -z "$err" ] || fail "upgrade: stderr: $err"

[ "$failures" -eq 0 ] && echo "tqclut programs ($mode): all checks passed"
exit "$failures"
