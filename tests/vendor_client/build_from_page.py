#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
"""Builds libwpa_client as docs/DEVICE.md has a vendor with an older tree define it, in a
supplicant tree laid out as the platform's (the header in wpa_client_include/libwpa_client/,
wpa_supplicant/src a link to src; the platform headers -DANDROID pulls in are the radio lab's
stand-ins), then the library and tests/vendor_client/host.cpp against it, as Soong would.
Exits 0 with OUT/VARIANT/{lib64,bin} built; 3 when the library's compile does not take
wpa_ctrl.h from a directory that libwpa_client_headers exports; 1 on any other failure.
"""
import argparse
import glob
import json
import os
import re
import shutil
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
STAND_INS = os.path.join(ROOT, "scripts", "radio-lab", "android-platform")
STRING = r'"(?:[^"\\]|\\.)*"'


def page_block(mark):
    """The Blueprint block of docs/DEVICE.md marked "<!-- checked: MARK -->"."""
    with open(os.path.join(ROOT, "docs", "DEVICE.md")) as page:
        found = re.search(r"<!-- checked: " + re.escape(mark) + r" -->\n```bp\n(.*?)```",
                          page.read(), re.S)
    if not found:
        sys.exit("docs/DEVICE.md has no block marked " + mark)
    return found.group(1)


def modules(bp):
    """{name: properties} of the block's top-level modules; lists of strings, strings, booleans."""
    found = {}
    for module in re.finditer(r"^\w+ \{\n(.*?)^\}", bp, re.M | re.S):
        props = {}
        for prop in re.finditer(r"^    (\w+): (\[.*?\]|" + STRING + r"|true|false),?$",
                                module.group(1), re.M | re.S):
            value = prop.group(2)
            if value.startswith("["):
                props[prop.group(1)] = [json.loads(s) for s in re.findall(STRING, value)]
            elif value.startswith('"'):
                props[prop.group(1)] = json.loads(value)
            else:
                props[prop.group(1)] = value == "true"
        found[props["name"]] = props
    return found


def variant(mods, name):
    """The page's modules, or one of the copies that must not work."""
    if name in ("no-client-dir", "first-version"):
        # The page's first version defined neither socket directory.
        client = mods["libwpa_client"]
        client["cflags"] = [f for f in client["cflags"] if "CTRL_IFACE_CLIENT_DIR" not in f
                            and "CTRL_IFACE_DIR" not in f]
    if name == "first-version":
        for module in mods.values():
            module["export_include_dirs"] = ["wpa_client_include"]
    return mods


def supplicant_package(source, out):
    """The package directory of external/wpa_supplicant_8/wpa_supplicant, as the platform has it."""
    tree = os.path.join(out, "tree")
    package = os.path.join(tree, "wpa_supplicant")
    if not os.path.isdir(package):
        header_dir = os.path.join(package, "wpa_client_include", "libwpa_client")
        os.makedirs(header_dir)
        os.symlink(os.path.join(source, "src"), os.path.join(tree, "src"))
        os.symlink("../src", os.path.join(package, "src"))
        shutil.copy(os.path.join(source, "src", "common", "wpa_ctrl.h"), header_dir)
    return package


def run(command):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if result.returncode != 0:
        print(" ".join(command) + "\n" + result.stdout, file=sys.stderr)
        sys.exit(1)
    return result.stdout


def main():
    parser = argparse.ArgumentParser()
    for option in ("variant", "source", "out", "cc", "cxx", "liblog", "liblog-include"):
        parser.add_argument("--" + option, required=True)
    args = parser.parse_args()
    mods = variant(modules(page_block("older trees")), args.variant)
    client, headers = mods["libwpa_client"], mods["libwpa_client_headers"]
    package = supplicant_package(args.source, args.out)
    out = os.path.join(args.out, args.variant)
    lib64 = os.path.join(out, "lib64")
    shutil.rmtree(out, ignore_errors=True)
    os.makedirs(lib64)
    os.makedirs(os.path.join(out, "bin"))
    liblog = ["-L" + os.path.dirname(args.liblog), "-llog"]

    # Soong compiles a module with its directory, its local and its own exported include
    # directories, then what its dependencies export: here libcutils' and the platform's stand-ins.
    libs = {"liblog": liblog, "libcutils": []}
    unknown = [lib for lib in client.get("shared_libs", []) if lib not in libs]
    if unknown:
        sys.exit("libwpa_client links libraries this build has no stand-in for: " + " ".join(unknown))
    includes = [package] + [os.path.join(package, d) for d in
                            client.get("local_include_dirs", []) + client.get("export_include_dirs", [])]
    run([args.cc, "-shared", "-fPIC", "-O2", "-fuse-ld=lld", "-Wl,-soname,libwpa_client.so",
         "-o", os.path.join(lib64, "libwpa_client.so")] + client.get("cflags", []) +
        ["-I" + d for d in includes] + ["-I" + STAND_INS] +
        [os.path.join(package, s) for s in client["srcs"]] +
        [flag for lib in client.get("shared_libs", []) for flag in libs[lib]])

    # The library takes wpa_ctrl.h through the header library alone; the host also has Debian's
    # copy in /usr/include, which a device does not: the check is where the compile found it.
    exported = [os.path.realpath(os.path.join(package, d)) for d in headers["export_include_dirs"]]
    cxx = [args.cxx, "-std=c++17", "-stdlib=libc++", "-fno-exceptions", "-I" + ROOT + "/include"]
    library_includes = ["-I" + ROOT + "/src", "-I" + args.liblog_include] + ["-I" + d for d in exported]
    deps = run(cxx + library_includes + ["-M", os.path.join(ROOT, "src", "wrapper", "execute.cpp")])
    taken = [os.path.realpath(p) for p in deps.replace("\\\n", " ").split() if p.endswith("/wpa_ctrl.h")]
    if not any(os.path.dirname(p) in exported for p in taken):
        print("rejected: no directory that libwpa_client_headers exports (%s) holds wpa_ctrl.h; "
              "the compile took %s" % (", ".join(headers["export_include_dirs"]), taken or "none"))
        sys.exit(3)

    run(cxx + library_includes + ["-O2", "-fPIC", "-fvisibility=hidden", "-shared", "-fuse-ld=lld",
                                  "-Wl,-z,defs", "-Wl,-soname,libtesmirwpacliwrapper.so",
                                  "-Wl,--version-script=" + ROOT + "/src/libtesmirwpacliwrapper.map",
                                  "-o", os.path.join(lib64, "libtesmirwpacliwrapper.so")] +
        sorted(glob.glob(os.path.join(ROOT, "src", "*", "*.cpp"))) + ["-L" + lib64, "-lwpa_client"] + liblog)
    run(cxx + ["-O2", "-fuse-ld=lld", "-o", os.path.join(out, "bin", "vendor_host"),
               os.path.join(HERE, "host.cpp"), "-L" + lib64, "-ltesmirwpacliwrapper"])


if __name__ == "__main__":
    main()
