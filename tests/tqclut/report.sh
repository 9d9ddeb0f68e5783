#!/bin/sh
# tqclut report in a real browser: headless Chromium renders the pages of two tables
# (one with findings, one without) to pictures, which must show their swatches as
# the HTML gives them; the HTML must need nothing but itself.
# usage: report.sh <source-folder> <tqclut>
set -u
source_dir=$1 program=$2
browser=$(command -v chromium || command -v chromium-browser) || {
  echo "report.sh: no Chromium (tools/install-deps installs it)"
  exit 77
}
work=$(mktemp -d "${TMPDIR:-/tmp}/tqreportXXXXXX")
trap 'rm -rf "$work"' EXIT
failures=0
fail() { printf 'FAIL %s\n' "$*"; failures=$((failures + 1)); }
# pixels <picture> <#RRGGBB>: how many pixels have exactly that colour.
pixels() {
  convert "$1" -format %c histogram:info:- | awk -v hex="$2" 'toupper($3) == toupper(hex) { sub(":", "", $1); n += $1 } END { print n + 0 }'
}
# swatch <page> <index> [vision]: the colour of the index's swatch.
swatch() {
  grep -o "data-index=\"$2\"${3:+ data-vision=\"$3\"} style=\"background:#[0-9A-F]\{6\}" "$1" | head -n 1 | sed 's/.*background://'
}

shown=$("$program" show --json "$source_dir/data/QLT830_colors.clut" | grep -o '"name":"' | wc -l)
for scheme in QLT830_colors QLT830_highperformance_light; do
  page=$work/$scheme.html picture=$work/$scheme.png
  "$program" report "$source_dir/data/$scheme.clut" -o "$page" >/dev/null || fail "$scheme: tqclut report failed"
  if grep -Eiq '<script|<link|<img|<iframe|<object|src=|url\(|@import|href="[^#]' "$page"; then
    fail "$scheme: the page needs something besides itself"
  fi
  [ "$(grep -c 'class="c"' "$page")" -eq "$shown" ] || fail "$scheme: not one swatch for each of the $shown colours shown"
  timeout 120 "$browser" --headless --no-sandbox --disable-gpu --hide-scrollbars --force-color-profile=srgb \
    --user-data-dir="$work/profile" --window-size=1280,6000 --screenshot="$picture" "file://$page" >/dev/null 2>&1
  size=$(identify -format '%wx%h' "$picture" 2>/dev/null)
  [ "$size" = 1280x6000 ] || { fail "$scheme: the browser drew no picture of 1280x6000 ($size)"; continue; }
  # A colour of the tabs only (Unpowered), the unacknowledged alarm as normal vision
  # and as a protanope sees it, and the process display background: each must cover
  # at least one swatch.
  [ "$(swatch "$page" 46)" != "$(swatch "$page" 46 protanopia)" ] || fail "$scheme: a protanope sees red as it is"
  for colour in "$(swatch "$page" 57)" "$(swatch "$page" 46)" "$(swatch "$page" 46 protanopia)" "$(swatch "$page" 23)"; do
    count=$(pixels "$picture" "$colour")
    [ "$count" -ge 1200 ] || fail "$scheme: $colour covers $count pixels of the picture, not a swatch"
  done
done
grep -q '<p>Every quality check passes.</p>' "$work/QLT830_highperformance_light.html" || fail "light scheme: not clean"
grep -q '<tr><td class="pair">.*FAIL text.process_display: 30 Text' "$work/QLT830_colors.html" || fail "classic: no finding on the text"

[ "$failures" -eq 0 ] && echo "tqclut report: all checks passed"
exit "$failures"
