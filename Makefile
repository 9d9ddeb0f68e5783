# The two commands of the README; everything else is reached through them.
.PHONY: test demo deps bench fuzz
deps:
	@tools/install-deps

# Installs what is missing, builds native, win64 and win32, runs all tests under one Xvfb.
test: deps
	@xvfb-run -a -s "-screen 0 1280x1024x24" tools/run-tests

demo: deps
	@echo "The editor window is not built yet: 'make demo' arrives with it."
	@echo "The control itself works: 'make test' registers it under Wine and drives it from"
	@echo "C++, VBScript and JScript hosts (tests/control/scripts/host_sample.vbs shows how)."
	@exit 1

# Figures of the colour table operations, from an optimised build without sanitizers.
bench: deps
	@cmake --preset native -B build/bench -DTQ_SANITIZE=OFF -DCMAKE_BUILD_TYPE=Release -Wno-dev >/dev/null
	@cmake --build build/bench --target bench
	@build/bench/tools/bench/bench

# The libFuzzer targets, two minutes each.
fuzz: deps
	@tools/run-fuzz 120
