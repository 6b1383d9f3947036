#!/usr/bin/env python3
"""Installs the Debian packages in a bare Debian, uses what they hold, removes them, and looks for what is left.

    check_packages.py FOLDER BASE MIRROR

FOLDER holds the packages. BASE is the bare Debian 12, which is made from the MIRROR where it is not there yet. As root.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

FOLDER, BASE, MIRROR = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
EXAMPLES = "/usr/share/doc/algoserver/examples"
OWN = ("algoserver", "libscriptframework-dev")


def make_base():
    if BASE.exists():
        return
    part = BASE.with_name(BASE.name + ".part")
    shutil.rmtree(part, ignore_errors=True)
    subprocess.run(["debootstrap", "--variant=minbase", "bookworm", part, MIRROR], check=True, stdout=subprocess.DEVNULL)
    (part / "usr/sbin/policy-rc.d").write_text("#!/bin/sh\nexit 101\n")  # nothing is started there
    (part / "usr/sbin/policy-rc.d").chmod(0o755)
    part.rename(BASE)


class Debian:
    """A copy of the bare one."""

    def __init__(self, root):
        self.root = root
        subprocess.run(["cp", "-a", f"{BASE}/.", root], check=True)
        shutil.copy("/etc/resolv.conf", root / "etc/resolv.conf")
        self.run("apt-get update -qq")

    def run(self, command):
        done = subprocess.run(["chroot", self.root, "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND=noninteractive", "LC_ALL=C.UTF-8", "sh", "-c", command],
                              capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"failed in the bare Debian: {command}\n{done.stdout}{done.stderr}")
        return done.stdout

    def install(self, *names):
        self.run(f"apt-get install -y -qq --no-install-recommends {' '.join(names)}")

    def files(self):
        return set(self.run("find / -xdev -path /proc -prune -o -print").splitlines())


def check_program(debian):
    """With what its package asks for alone: no compiler, no luacheck."""
    debian.install(*(f"/packages/{path.name}" for path in (debian.root / "packages").glob("algoserver_*")))
    log = debian.run(f"algoserver run {EXAMPLES}/hello.lua --data {EXAMPLES}/data/demo_quotes.csv.gz --report /tmp/page.html --profile /tmp/profile.html")
    assert "first trade: 1 at 100\n" in log and "end         the script shut down\n" in log, log
    debian.run(f"algoserver run --sandbox strict {EXAMPLES}/market_maker.lua --data {EXAMPLES}/data/demo_quotes.csv.gz >/dev/null")
    debian.run("test -s /tmp/page.html -a -s /tmp/profile.html -a -s /usr/share/man/man1/algoserver-run.1.gz"
               " -a -s /usr/share/scriptFramework/types/algoserver.lua && bash -n /usr/share/bash-completion/completions/algoserver")
    debian.run("rm /tmp/*.html")


def check_library(debian):
    """The example that links the library, and a program that asks for the parts of the host."""
    debian.install("cmake", "g++", "make", *(f"/packages/{path.name}" for path in (debian.root / "packages").glob("lib*")))
    debian.run("cmake -S /usr/share/doc/libscriptframework-dev/examples/embedding -B /tmp/embedding && make -C /tmp/embedding")
    assert "script: DEMO is bid 100 for 5\n" in debian.run("/tmp/embedding/embedding")
    assert "script: over with 2 of 3, true\n" in debian.run("/tmp/embedding/orders")
    host = debian.root / "tmp/host"
    host.mkdir()
    (host / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(host LANGUAGES CXX)\n"
                                         "find_package(scriptFramework REQUIRED COMPONENTS host)\nadd_executable(host main.cpp)\n"
                                         "target_link_libraries(host PRIVATE scriptFramework::host)\n")
    (host / "main.cpp").write_text('#include "host/run/nxRun.h"\n#include <iostream>\nint main(int, char** argv) { nxRunOptions options; options.jobs.emplace_back();\n'
                                   "options.jobs[0].script = argv[1]; options.jobs[0].name = \"hello\"; options.data = {argv[2]};\n"
                                   "return static_cast<int>(nxRun(options, std::cout, std::cerr).Run()); }\n")
    debian.run("cmake -S /tmp/host -B /tmp/host/build && make -C /tmp/host/build")
    assert "first trade: 1 at 100\n" in debian.run(f"/tmp/host/build/host {EXAMPLES}/hello.lua {EXAMPLES}/data/demo_quotes.csv.gz")
    debian.run("rm -r /tmp/embedding /tmp/host")


def check_removal(debian, before):
    own = set(debian.run(f"dpkg -L {' '.join(OWN)}").split("\n")) - before - {""}
    assert len(own) > 300, own
    debian.run(f"apt-get purge -y -qq {' '.join(OWN)}")
    after = debian.files()
    left = sorted(own & after) + sorted(path for path in after - before if any(name in path.lower() for name in ("algoserver", "scriptframework")))
    others = {path for path in left if debian.run(f"dpkg -S '{path}' 2>/dev/null || true")}  # folders that others have as well
    assert set(left) <= others, sorted(set(left) - others)


make_base()
with tempfile.TemporaryDirectory(dir=BASE.parent) as folder:
    debian = Debian(pathlib.Path(folder))
    (debian.root / "packages").mkdir()
    for package in FOLDER.glob("*.deb"):
        shutil.copy(package, debian.root / "packages")
    before = debian.files()
    check_program(debian)
    check_library(debian)
    check_removal(debian, before)
print("installed, used, removed; nothing is left")
