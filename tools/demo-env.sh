# Sourced by run-demo, run-samples and make-screenshots: the demo installation and
# the demo's own Wine prefix, in build/demo/.
#
# demo_prepare [build-folder]: builds the control and the demo display (the win64
# preset when no folder is given; a given folder must have been configured with the
# x86_64 toolchain), makes a fresh installation from data/ and registers the control.
# Afterwards: $build (absolute), $demo, $prefix, $install, $app and $user (as Windows
# paths), and the functions windows, wine_run and demo_headless.
root=$(cd "$(dirname "$0")/.." && pwd)
demo=$root/build/demo
prefix=$demo/wineprefix
install=$demo/install

windows() { printf 'Z:%s' "$1" | tr / '\\'; }  # Wine shows the Unix root as Z:
wine_run() { "$root/tools/wine-run" "$prefix" "$@"; }

demo_prepare() {
  build=${1:-}
  if [ -z "$build" ]; then
    build=$root/build/win64
    (cd "$root" && cmake --preset win64 -Wno-dev >/dev/null)
  fi
  cmake --build "$build" --target TqColorSettingTool demo_display
  build=$(cd "$build" && pwd)

  # A fresh installation each run, so that no lock or edit of an earlier run gets in
  # the way: the toolkit home with the factory tables (the classic and the
  # two high-performance schemes), and an application and a user folder (the control
  # copies the tables into the application's scheme folder).
  rm -rf "$install"
  mkdir -p "$install/dvhome/etc" "$install/app/ColorSchemes" "$install/user"
  cp "$root/data/QLT830_colors.clut" "$root/data/QLT830_colors\$clut" \
    "$root/data/QLT830_highperformance.clut" "$root/data/QLT830_highperformance\$clut" \
    "$root/data/QLT830_highperformance_light.clut" "$root/data/QLT830_highperformance_light\$clut" "$install/dvhome/etc/"
  app=$(windows "$install/app")
  user=$(windows "$install/user")

  wine_run regsvr32.exe /s "$(windows "$build/bin/TqColorSettingTool.dll")"
  # The control reads the toolkit's home from the registry's 32-bit view.
  wine_run reg.exe add 'HKLM\SOFTWARE\DataViews\DVtools\2.6' /v DVHOME /d "$(windows "$install/dvhome")" /f /reg:32 >/dev/null

  # Xvfb has no window manager: there Wine draws the windows' frames itself, so that
  # pictures of a window's rectangle have its caption and borders.
  if [ -n "${DISPLAY:-}" ]; then
    wine_run reg.exe delete 'HKCU\Software\Wine\X11 Driver' /v Managed /f >/dev/null 2>&1 || true
  else
    wine_run reg.exe add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
  fi
  # What runs next must start under the X server it is given, not in a Wine session left from above.
  WINEPREFIX=$prefix wineserver -w
}

# demo_headless <program> [arguments...]: runs a Windows program of the demo prefix in
# an X server of its own; Wine's session ends before that server does.
demo_headless() {
  WINEPREFIX=$prefix xvfb-run -a -s "-screen 0 1280x1024x24" sh -c '"$@"; status=$?; wineserver -k; exit $status' \
    demo_headless "$root/tools/wine-run" "$prefix" "$@"
}
