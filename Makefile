# `make demo` and `make test` are the README's two set-up commands; the README also
# shows `make package` and `make samples`. CONTRIBUTING.md describes every target.
.PHONY: test demo deps bench fuzz samples screenshots package
deps:
	@tools/install-deps

# Installs what is missing, builds native, win64 and win32, runs all tests under one Xvfb.
test: deps
	@xvfb-run -a -s "-screen 0 1280x1024x24" tools/run-tests

# The sample process display with the control on a demo installation under Wine: in a
# window when there is a display, else in Xvfb, leaving build/demo/editor.png.
demo: deps
	@tools/run-demo

# The three sample hosts of demo/ (C++, VBScript, JScript) headless on the demo
# installation; each prints the colours it received.
samples: deps
	@tools/run-samples

# The pictures in docs/ (the editor and the display in English and German, the editor
# on the high-performance scheme and read-only on the voltage levels), from the demo display.
screenshots: deps
	@tools/make-screenshots

# Figures of the colour table operations, from an optimised build without sanitizers;
# then those of the editor window under Wine in Xvfb, from an optimised win64 build.
bench: deps
	@cmake --preset native -B build/bench -DTQ_SANITIZE=OFF -DCMAKE_BUILD_TYPE=Release -Wno-dev >/dev/null
	@cmake --build build/bench --target bench
	@build/bench/tools/bench/bench
	@cmake -S . -B build/bench-win64 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-x86_64.cmake -DCMAKE_BUILD_TYPE=Release -Wno-dev >/dev/null
	@tools/bench/run-editor-bench build/bench-win64

# The libFuzzer targets, two minutes each.
fuzz: deps
	@tools/run-fuzz 120

# The installer build/package/TqColorSettingTool-<version>.msi (x64 and x86 controls with
# their language libraries), made with wixl from the win64 and win32 builds.
package: deps
	@tools/build-package
