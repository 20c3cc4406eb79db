// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Android.bp as Soong sees it, checked the way Soong's own cc tests check modules: Soong's test
// harness from Debian's Soong sources (Android 11 era), the platform's toolchain modules from
// cc.GatherRequiredDepsForTest, an arm64 device with a 32-bit arm secondary architecture.
// Run in GOPATH mode: GO111MODULE=off GOPATH=/usr/share/gocode go test (scripts/test.sh).
package androidbp

import (
	"bytes"
	"errors"
	"io/ioutil"
	"os"
	"os/exec"
	"path/filepath"
	"reflect"
	"regexp"
	"sort"
	"strings"
	"testing"
	"unsafe"

	"github.com/google/blueprint"

	"android/soong/android"
	"android/soong/cc"
)

const (
	project    = "../.."
	library    = "libtesmirwpacliwrapper"
	cfiVariant = "android_vendor.VER_arm64_armv8-a_shared_cfi"
	// Soong's CFI support adds it as a second version script; the platform ships this text.
	cfiExportsMap = "build/soong/cc/config/cfi_exports.map"
	cfiExports    = "{\n  global:\n    __cfi_check;\n};\n"
)

var (
	fuzzers    = []string{"libtesmirwpacliwrapper_strutil_fuzzer", "libtesmirwpacliwrapper_event_fuzzer"}
	ourModules = append([]string{"libtesmirwpacliwrapper_core", library,
		"libtesmirwpacliwrapper_unit_test", "tesmir-wpacli", "libtesmirrecipes", "tesmir-list-helper",
		"tesmir-recipes"}, fuzzers...)
)

// What the project reaches beyond the toolchain's modules, as the platform defines it: liblog as
// LLNDK with its header library, googletest, and libcutils.
const platformModules = `
cc_library { name: "liblog", no_libcrt: true, nocrt: true, system_shared_libs: [], stl: "none" }
llndk_library { name: "liblog", symbol_file: "" }
cc_library_headers { name: "liblog_headers", vendor_available: true }
cc_library_static { name: "libgtest", vendor_available: true, stl: "none" }
cc_library_static { name: "libgtest_main", vendor_available: true, stl: "none" }
cc_library_static { name: "libgmock", vendor_available: true, stl: "none" }
cc_library { name: "libcutils", vendor_available: true, stl: "none" }
`

// libwpa_client on the vendor side, in the supplicant's own package, as trees from Android 15 QPR2
// define it: the header library exports the package and the header's directory.
const currentWpaClientModules = `
cc_library_shared { name: "libwpa_client", proprietary: true, stl: "none" }
cc_library_headers {
    name: "libwpa_client_headers",
    soc_specific: true,
    export_include_dirs: [".", "wpa_client_include/libwpa_client"],
}
`

const (
	supplicantDir = "external/wpa_supplicant_8/wpa_supplicant"
	// Every tree keeps the header here; AOSP's wpa_supplicant/src links to the tree's src.
	wpaCtrlHeader = supplicantDir + "/wpa_client_include/libwpa_client/wpa_ctrl.h"
)

// Soong's mock file system: the project's files, so that a missing source is Soong's error, and
// the platform's files that its toolchain modules name.
func mockFiles(t *testing.T) map[string][]byte {
	fs := map[string][]byte{cfiExportsMap: []byte(cfiExports), "libc.map.txt": nil,
		"libm.map.txt": nil, "libdl.map.txt": nil,
		// The host of docs/DEVICE.md, and the supplicant's files its older trees' modules name.
		"vendor/host/main.cpp": nil, "vendor/host/myhost.rc": nil,
		supplicantDir + "/src/common/wpa_ctrl.c": nil, supplicantDir + "/src/utils/os_unix.c": nil,
		supplicantDir + "/src/utils/common.h": nil, wpaCtrlHeader: nil,
		"prebuilts/ndk/current/sources/cxx-stl/llvm-libc++/libs/arm64-v8a/libc++_shared.so": nil}
	err := filepath.Walk(project, func(path string, info os.FileInfo, err error) error {
		if err != nil {
			return err
		}
		name, _ := filepath.Rel(project, path)
		if info.IsDir() && (strings.HasPrefix(name, "build") || name == ".git") {
			return filepath.SkipDir
		}
		// The root Android.bp is the one under analysis, which the harness writes itself.
		if !info.IsDir() && name != "Android.bp" {
			fs[name] = nil
		}
		return nil
	})
	if err != nil {
		t.Fatal(err)
	}
	return fs
}

var (
	licenseModules = regexp.MustCompile(`(?ms)^(package|license) \{\n.*?^\}\n`)
	licenseTexts   = regexp.MustCompile(`license_text: \[([^\]]*)\]`)
)

// Android 12 trees want the package and license modules, which this Soong predates: they are
// removed before the analysis, once this test has checked the license texts they name.
func withoutLicenseModules(bp []byte, fs map[string][]byte) ([]byte, error) {
	texts := licenseTexts.FindSubmatch(bp)
	if texts == nil || !bytes.Contains(bp, []byte(`default_applicable_licenses: ["libtesmirwpacliwrapper_license"]`)) {
		return nil, errors.New("no license module applied to the package by default")
	}
	for _, text := range strings.Split(string(texts[1]), ",") {
		if _, found := fs[strings.Trim(text, " \n\"")]; !found {
			return nil, errors.New(`license_text ` + strings.TrimSpace(text) + ` does not exist`)
		}
	}
	return licenseModules.ReplaceAll(bp, nil), nil
}

// Soong's analysis of |bp|, beside |other| as the Android.bp of another package if not empty, in a
// tree whose libwpa_client is the platform's.
func analyse(t *testing.T, bp []byte, other string) (*android.TestContext, []error) {
	return analyseWith(t, bp, other, currentWpaClientModules)
}

// Soong's analysis of |bp| beside |other| (as analyse) and |wpaClient|, the Android.bp of the
// supplicant's package.
func analyseWith(t *testing.T, bp []byte, other, wpaClient string) (*android.TestContext, []error) {
	t.Helper()
	fs := mockFiles(t)
	bp, err := withoutLicenseModules(bp, fs)
	if err != nil {
		return nil, []error{err}
	}
	files := []string{"Android.bp"}
	for path, text := range map[string]string{"vendor/host/Android.bp": other, supplicantDir + "/Android.bp": wpaClient} {
		if text != "" {
			fs[path] = []byte(text)
			files = append(files, path)
		}
	}
	config := cc.TestConfig(t.TempDir(), android.Android, nil, string(bp)+platformModules, fs)
	vndk, platformVndk := "current", "VER"
	config.TestProductVariables.DeviceVndkVersion = &vndk
	config.TestProductVariables.Platform_vndk_version = &platformVndk
	// A device build checks that every path exists and enforces visibility; the harness does
	// neither unless told.
	allow := reflect.ValueOf(config).Field(0).Elem().FieldByName("testAllowNonExistentPaths")
	reflect.NewAt(allow.Type(), unsafe.Pointer(allow.UnsafeAddr())).Elem().SetBool(false)
	ctx := cc.CreateTestContext()
	ctx.PreArchMutators(android.RegisterVisibilityRuleChecker)
	ctx.PreArchMutators(android.RegisterVisibilityRuleGatherer)
	ctx.PostDepsMutators(android.RegisterVisibilityRuleEnforcer)
	ctx.Register(config)
	if _, errs := ctx.ParseFileList(".", files); len(errs) > 0 {
		return nil, errs
	}
	_, errs := ctx.PrepareBuildActions(config)
	return ctx, errs
}

func readProject(t *testing.T, name string) []byte {
	content, err := ioutil.ReadFile(filepath.Join(project, name))
	if err != nil {
		t.Fatal(err)
	}
	return content
}

func analyseProject(t *testing.T) *android.TestContext {
	t.Helper()
	ctx, errs := analyse(t, readProject(t, "Android.bp"), "")
	android.FailIfErrored(t, errs)
	return ctx
}

// A variable of the build.ninja that Soong writes: module variables hold a module's own flags.
func ninjaVariable(t *testing.T, ctx *android.TestContext, name string) string {
	t.Helper()
	var ninja bytes.Buffer
	if err := ctx.WriteBuildFile(&ninja); err != nil {
		t.Fatal(err)
	}
	m := regexp.MustCompile(`(?m)^` + regexp.QuoteMeta(name) + ` = (.*)$`).FindSubmatch(ninja.Bytes())
	if m == nil {
		t.Fatalf("no %s in build.ninja", name)
	}
	return string(m[1])
}

// The target is 64-bit Arm and libwpa_client lives on the vendor side; the fixed log formats that
// print size_t with %lu do not compile where size_t is 32 bits.
func TestEveryModuleHasArm64VendorVariantsOnly(t *testing.T) {
	ctx := analyseProject(t)
	for _, module := range ourModules {
		for _, variant := range ctx.ModuleVariantsForTests(module) {
			if !strings.HasPrefix(variant, "android_vendor.VER_arm64_") {
				t.Errorf("%s: variant %s is not an arm64 vendor variant", module, variant)
			}
		}
	}
	if variants := ctx.ModuleVariantsForTests(library); !reflect.DeepEqual(variants, []string{cfiVariant}) {
		t.Errorf("%s: variants %v, want only %s", library, variants, cfiVariant)
	}
}

// The exported typeinfo needs RTTI; the platform's checks trap rather than report.
func TestLibraryCompilesWithRttiAndTrappingChecks(t *testing.T) {
	ctx := analyseProject(t)
	module := "m.libtesmirwpacliwrapper_core_android_vendor.VER_arm64_armv8-a_static_cfi."
	flags := ninjaVariable(t, ctx, module+"cflags") + " " + ninjaVariable(t, ctx, module+"cppflags")
	sanitizers := map[string]bool{}
	for _, m := range regexp.MustCompile(`-fsanitize=(\S+)`).FindAllStringSubmatch(flags, -1) {
		for _, s := range strings.Split(m[1], ",") {
			sanitizers[s] = true
		}
	}
	for _, want := range []string{"cfi", "unsigned-integer-overflow", "signed-integer-overflow", "bounds"} {
		if !sanitizers[want] {
			t.Errorf("compile flags lack the %s sanitizer: %s", want, flags)
		}
	}
	for _, want := range []string{"-fsanitize-cfi-cross-dso", "-fno-exceptions"} {
		if !strings.Contains(flags, want) {
			t.Errorf("compile flags lack %s: %s", want, flags)
		}
	}
	// This Soong puts -fsanitize-trap=all after the minimal runtime's flags, so every check
	// traps. Android 14 and later put the minimal runtime last: the integer and bounds checks
	// then abort through it (the host's TESMIR_UBSAN_MINIMAL_RUNTIME build).
	minimal, trap := strings.Index(flags, "-fsanitize-minimal-runtime"), strings.LastIndex(flags, "-fsanitize-trap=all")
	if minimal < 0 || trap < minimal {
		t.Errorf("want the minimal runtime's flags, then -fsanitize-trap=all: %s", flags)
	}
	if rtti := regexp.MustCompile(`-f(no-)?rtti`).FindAllString(flags, -1); len(rtti) == 0 ||
		rtti[len(rtti)-1] != "-frtti" {
		t.Errorf("the last RTTI flag is not -frtti: %v", rtti)
	}
}

// The device link of the library reproduced on the host with Soong's version scripts, LTO and
// cross-DSO CFI, and -Wl,--no-undefined-version: every name of our version script must exist,
// and the exports are the interface and the CFI entry point.
func TestDeviceLinkOnHost(t *testing.T) {
	ctx := analyseProject(t)
	ldFlags := ctx.ModuleForTests(library, cfiVariant).Rule("ld").Args["ldFlags"] + " " +
		ninjaVariable(t, ctx, "g.config.DeviceGlobalLldflags")
	var scripts []string
	for _, m := range regexp.MustCompile(`-Wl,--version-script,(\S+)`).FindAllStringSubmatch(ldFlags, -1) {
		scripts = append(scripts, m[1])
	}
	if !reflect.DeepEqual(scripts, []string{"src/libtesmirwpacliwrapper.map", cfiExportsMap}) {
		t.Fatalf("version scripts %v, want ours and %s", scripts, cfiExportsMap)
	}
	for _, want := range []string{"-Wl,--no-undefined-version", "-fsanitize=cfi", "-flto"} {
		if !strings.Contains(ldFlags, want) {
			t.Errorf("link flags lack %s: %s", want, ldFlags)
		}
	}
	work := t.TempDir()
	cfiMap, lib := filepath.Join(work, "cfi_exports.map"), filepath.Join(work, library+".so")
	if err := ioutil.WriteFile(cfiMap, []byte(cfiExports), 0o644); err != nil {
		t.Fatal(err)
	}
	sources, _ := filepath.Glob(filepath.Join(project, "src", "*", "*.cpp"))
	args := append([]string{"-std=c++17", "-stdlib=libc++", "-fno-exceptions", "-frtti", "-O2",
		"-fPIC", "-fvisibility=hidden", "-flto", "-fsanitize=cfi", "-fsanitize-cfi-cross-dso",
		"-Wall", "-Wextra", "-Werror", "-I" + project + "/include", "-I" + project + "/src",
		"-I/usr/include/android", "-fuse-ld=lld", "-shared", "-o", lib,
		"-Wl,--version-script," + filepath.Join(project, scripts[0]), "-Wl,--version-script," + cfiMap,
		"-Wl,--no-undefined-version", "-Wl,--allow-shlib-undefined"}, sources...)
	if out, err := exec.Command("/usr/bin/clang++-14", args...).CombinedOutput(); err != nil {
		t.Fatalf("the device link fails: %v\n%s", err, out)
	}
	out, err := exec.Command("/usr/bin/nm", "-D", "--defined-only", "--format=just-symbols", lib).Output()
	if err != nil {
		t.Fatal(err)
	}
	listed := regexp.MustCompile(`(?m)^#.*$`).ReplaceAll(readProject(t, "tests/abi/exported_symbols.txt"), nil)
	want, exported := append(strings.Fields(string(listed)), "__cfi_check"), strings.Fields(string(out))
	sort.Strings(want)
	sort.Strings(exported)
	if !reflect.DeepEqual(exported, want) {
		t.Errorf("exports of the CFI link: %v, want %v", exported, want)
	}
}

// The unit test has the defaults' cfi: true, so Soong links it with LTO and CFI, with the
// --wrap=select its fakes need, and with googletest's CFI variants; the host build links the
// tests so (unit_tests_lto_cfi_wrapped_select) and runs them.
func TestUnitTestLinksWithLtoCfiAndWrappedSelect(t *testing.T) {
	ctx := analyseProject(t)
	link := ctx.ModuleForTests("libtesmirwpacliwrapper_unit_test", "android_vendor.VER_arm64_armv8-a_cfi").Rule("ld")
	for _, want := range []string{"-flto", "-fsanitize=cfi", "-fsanitize-cfi-cross-dso", "-Wl,--wrap=select"} {
		if !strings.Contains(link.Args["ldFlags"], want) {
			t.Errorf("the unit test's link flags lack %s: %s", want, link.Args["ldFlags"])
		}
	}
	for _, lib := range []string{"libgtest", "libgmock"} {
		if !strings.Contains(strings.Join(link.Implicits.Strings(), " "), "/"+lib+"/android_vendor.VER_arm64_armv8-a_static_cfi/") {
			t.Errorf("the unit test does not link the CFI variant of %s", lib)
		}
	}
}

// The fuzzers build as the platform builds fuzzers: the fuzzer sanitizer and libFuzzer, over the
// core library compiled for fuzzing, with the fakes' --wrap=select.
func TestFuzzersLinkLibFuzzerOverTheCore(t *testing.T) {
	ctx := analyseProject(t)
	for _, fuzzer := range fuzzers {
		variants := ctx.ModuleVariantsForTests(fuzzer)
		if len(variants) != 1 {
			t.Fatalf("%s: variants %v, want one", fuzzer, variants)
		}
		link := ctx.ModuleForTests(fuzzer, variants[0]).Rule("ld")
		inputs := strings.Join(append(link.Implicits.Strings(), link.Inputs.Strings()...), " ")
		if !strings.Contains(inputs, "/libtesmirwpacliwrapper_core/android_vendor.VER_arm64_armv8-a_static_fuzzer/") {
			t.Errorf("%s does not link the core library's fuzzer variant: %s", fuzzer, inputs)
		}
		// The harness's toolchain modules have no outputs: libFuzzer shows as a dependency only.
		deps := map[string]bool{}
		ctx.VisitDirectDeps(ctx.ModuleForTests(fuzzer, variants[0]).Module(),
			func(dep blueprint.Module) { deps[ctx.ModuleName(dep)] = true })
		if !deps["libclang_rt.fuzzer-aarch64-android"] {
			t.Errorf("%s does not depend on libFuzzer: %v", fuzzer, deps)
		}
		if !strings.Contains(link.Args["ldFlags"], "-Wl,--wrap=select") {
			t.Errorf("%s: link flags lack -Wl,--wrap=select: %s", fuzzer, link.Args["ldFlags"])
		}
		module := "m." + fuzzer + "_" + variants[0] + "."
		if flags := ninjaVariable(t, ctx, module+"cflags"); !strings.Contains(flags, "-fsanitize=fuzzer-no-link") {
			t.Errorf("%s: compile flags lack -fsanitize=fuzzer-no-link: %s", fuzzer, flags)
		}
	}
}

// A block of docs/DEVICE.md that a vendor copies, marked "<!-- checked: |mark| -->".
func deviceBlock(t *testing.T, mark string) string {
	t.Helper()
	block := regexp.MustCompile("(?s)<!-- checked: " + regexp.QuoteMeta(mark) + " -->\n```bp\n(.*?)```").
		FindSubmatch(readProject(t, "docs/DEVICE.md"))
	if block == nil {
		t.Fatalf("docs/DEVICE.md has no block marked %q", mark)
	}
	return string(block[1])
}

// The host module that docs/DEVICE.md gives vendors builds from another package, with the library
// and the recipes; a copy without vendor: true is refused.
func TestDeviceDocConsumerModule(t *testing.T) {
	consumer := deviceBlock(t, "consumer module")
	ctx, errs := analyse(t, readProject(t, "Android.bp"), consumer)
	android.FailIfErrored(t, errs)
	link := ctx.ModuleForTests("myhost", "android_vendor.VER_arm64_armv8-a").Rule("ld")
	libs := link.Args["libFlags"]
	if !strings.Contains(libs, "/"+library+"/"+cfiVariant+"/") {
		t.Errorf("myhost does not link the library's vendor variant: %s", libs)
	}
	if !strings.Contains(libs, "/libtesmirrecipes/android_vendor.VER_arm64_armv8-a_static/") {
		t.Errorf("myhost does not link the recipes' vendor variant: %s", libs)
	}
	_, errs = analyse(t, readProject(t, "Android.bp"), strings.Replace(consumer, "    vendor: true,\n", "", 1))
	android.FailIfNoMatchingErrors(t, `dependency "libtesmirwpacliwrapper" of "myhost" missing variant`, errs)
}

// The include directories of the core library's compile that hold wpa_ctrl.h. Soong checks only
// that an exported directory exists, not what it holds: a wrong one fails at the compiler.
func wpaCtrlIncludeDirs(t *testing.T, ctx *android.TestContext) []string {
	t.Helper()
	flags := ctx.ModuleForTests("libtesmirwpacliwrapper_core", "android_vendor.VER_arm64_armv8-a_static_cfi").
		Rule("cc").Args["cFlags"]
	var dirs []string
	for _, m := range regexp.MustCompile(`(?:-I|-isystem )(\S+)`).FindAllStringSubmatch(flags, -1) {
		if filepath.Join(m[1], "wpa_ctrl.h") == wpaCtrlHeader {
			dirs = append(dirs, m[1])
		}
	}
	return dirs
}

func TestLibraryCompilesWithThePlatformsWpaCtrlHeader(t *testing.T) {
	if dirs := wpaCtrlIncludeDirs(t, analyseProject(t)); len(dirs) == 0 {
		t.Errorf("no include directory of the library's compile holds %s", wpaCtrlHeader)
	}
}

// Trees before Android 15 QPR2 define libwpa_client in Make: docs/DEVICE.md gives its Soong
// modules, which serve the library in place of the platform's. The page's first version
// exported wpa_client_include, where no tree has the header: Soong accepts it, the compile fails.
func TestDeviceDocOlderTreesModules(t *testing.T) {
	block := deviceBlock(t, "older trees")
	ctx, errs := analyseWith(t, readProject(t, "Android.bp"), "", block)
	android.FailIfErrored(t, errs)
	link := ctx.ModuleForTests(library, cfiVariant).Rule("ld")
	if libs := link.Args["libFlags"]; !strings.Contains(libs, "/libwpa_client/android_vendor.VER_arm64_armv8-a_shared") {
		t.Errorf("the library does not link libwpa_client as docs/DEVICE.md defines it: %s", libs)
	}
	if dirs := wpaCtrlIncludeDirs(t, ctx); len(dirs) == 0 {
		t.Errorf("with docs/DEVICE.md's modules no include directory of the library's compile holds %s", wpaCtrlHeader)
	}

	exports := regexp.MustCompile(`export_include_dirs: \[[^\]]*\]`)
	if n := len(exports.FindAllString(block, -1)); n != 2 {
		t.Fatalf("docs/DEVICE.md's block has %d export_include_dirs, want one a module", n)
	}
	first := exports.ReplaceAllString(block, `export_include_dirs: ["wpa_client_include"]`)
	ctx, errs = analyseWith(t, readProject(t, "Android.bp"), "", first)
	android.FailIfErrored(t, errs)
	if dirs := wpaCtrlIncludeDirs(t, ctx); len(dirs) != 0 {
		t.Errorf("the first version's modules are accepted: %v hold %s", dirs, wpaCtrlHeader)
	}
}

// A module of another package that links the core library, which holds a copy of gTesmirLogLevel
// outside the version script: hosts must take the shared library.
const otherPackage = `cc_library_shared { name: "libhost", vendor: true, compile_multilib: "64",
    shared_libs: ["libtesmirwpacliwrapper"], static_libs: ["libtesmirwpacliwrapper_core"] }`

// Broken copies of Android.bp, each rejected with Soong's own message (the licence text with this
// test's, since this Soong has no license module type), and the core library linked from outside.
func TestBrokenAndroidBpIsRejected(t *testing.T) {
	cases := []struct{ what, from, to, other, message string }{
		{"core library linked from another package", "", "", otherPackage,
			`depends on //\.?:libtesmirwpacliwrapper_core which is not visible to this module`},
		{"unknown property", "    version_script:", "    frobnicate: true,\n    version_script:", "",
			`unrecognized property "frobnicate"`},
		{"misspelled header library", `"libwpa_client_headers",`, `"libwpa_client_header",`, "",
			`depends on undefined module "libwpa_client_header"`},
		{"missing source", `"src/wrapper/execute.cpp",`, `"src/wrapper/exec.cpp",`, "",
			`source path "[^"]*src/wrapper/exec.cpp" does not exist`},
		{"platform library not available to vendors", "\"liblog\",\n    ],\n    export",
			"\"liblog\",\n        \"libft2\",\n    ],\n    export", "",
			`should not link to "libft2.llndk" which is marked as .vendor_available: false.`},
		{"vendor: true removed", "    vendor: true,\n", "", "",
			`dependency "libwpa_client_headers" of "[^"]+" missing variant`},
		{"licence text missing", `license_text: ["LICENSE"]`, `license_text: ["COPYING"]`, "",
			`license_text "COPYING" does not exist`},
	}
	bp := readProject(t, "Android.bp")
	for _, c := range cases {
		t.Run(c.what, func(t *testing.T) {
			if !bytes.Contains(bp, []byte(c.from)) {
				t.Fatalf("Android.bp no longer holds %q", c.from)
			}
			_, errs := analyse(t, bytes.Replace(bp, []byte(c.from), []byte(c.to), 1), c.other)
			android.FailIfNoMatchingErrors(t, c.message, errs)
		})
	}
}

// tesmir-recipes lists through tesmir-list-helper beside it in /vendor/bin, so the tool requires
// its helper: PRODUCT_PACKAGES_DEBUG installs both from the tool's name. This Soong hands
// `required` to Make as LOCAL_REQUIRED_MODULES (android/androidmk.go) without checking the name:
// the test checks that it names the helper's vendor variant.
func TestRecipesToolRequiresItsHelper(t *testing.T) {
	ctx := analyseProject(t)
	const tool, helper = "tesmir-recipes", "tesmir-list-helper"
	for _, variant := range ctx.ModuleVariantsForTests(tool) {
		required := ctx.ModuleForTests(tool, variant).Module().RequiredModuleNames()
		if !android.InList(helper, required) {
			t.Errorf("%s (%s) requires %v, not %s", tool, variant, required, helper)
		}
		if helperVariants := ctx.ModuleVariantsForTests(helper); !android.InList(variant, helperVariants) {
			t.Errorf("%s has no variant %s beside its tool's: %v", helper, variant, helperVariants)
		}
	}
}
