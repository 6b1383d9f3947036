#!/usr/bin/env python3
"""Installs the Debian packages in a bare Debian, uses what they hold, removes them, and looks for what is left.

    check_packages.py FOLDER BASE MIRROR

FOLDER holds the packages. BASE is the bare Debian 12, which is made from the MIRROR where it is not there yet. As root.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

FOLDER, BASE, MIRROR = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
GOLDEN = pathlib.Path(__file__).resolve().parent.parent / "apps/golden"
DOC = "/usr/share/doc/algoserver"
DEMO = "examples/data/demo_quotes.csv.gz"
OWN = ("algoserver", "libscriptframework-dev")
MARKET_MAKER = f"cd {DOC} && algoserver run examples/market_maker.lua --data {DEMO} --latency 5ms --feed-latency 5ms"
# What a user types, and a part of what comes. First with what the package asks for alone: no compiler, no luacheck.
ALONE = (
    ("dpkg-query -W -f '${Version} ${binary:Summary}' algoserver | grep \"^$(algoserver --version)-\"", " replays "),
    (f"cat {DOC}/contained/*", "Lua.org"),
    ("algoserver doctor", "check       without"),
    (f"{MARKET_MAKER} --sandbox strict", "profit      0.94"),
    (f"cd {DOC} && algoserver run --test examples/moving_average_test.lua", "3 tests, 0 failed\n"),
    (f"cd {DOC} && algoserver run examples/hello.lua --data {DEMO} --report ~/page.html --profile ~/profile.html && grep -c dygraph ~/page.html ~/profile.html",
     "first trade: 1 at 100\n"),
    ("algoserver man -o made && for page in made/*; do zcat /usr/share/man/man1/${page#*/}.gz | cmp - $page || exit 1; done; echo all pages", "all pages"),
    ("algoserver types -o made && cmp made/algoserver.lua /usr/share/scriptFramework/types/algoserver.lua && echo same types", "same types"),
)
EQUIPPED = (
    ("man algoserver-sweep-status | cat", "algoserver-sweep-status - "),
    ("bash -c '. /usr/share/bash-completion/bash_completion; _completion_loader algoserver; COMP_WORDS=(algoserver rep) COMP_CWORD=1; _algoserver; echo $COMPREPLY'",
     "report\n"),
    ("zsh -c 'autoload -U compinit; compinit -D; echo $_comps[algoserver]; autoload +X _algoserver'", "_algoserver\n"),
    ("fish -c 'complete -C \"algoserver rep\"'", "report\t"),
    ("algoserver doctor", "check       ok"),
    (f"ls {DOC}/examples/*.lua | grep -v _test | xargs algoserver check && echo all right", "all right\n"),
    ("algoserver new mine >commands && sh -ex commands && test -s mine/result.html -a -s mine/sweep.db", "verdict "),
)
LIBRARY = (
    ("cmake -S /usr/share/doc/libscriptframework-dev/examples/embedding -B embedding && make -sC embedding && embedding/embedding", "script: DEMO is bid 100 for 5\n"),
    ("embedding/orders", "script: over with 2 of 3, true\n"),
    # Each header, so that what they include has to be there.
    (f"cd /usr/include/scriptFramework && find * -name '*.h' -printf '#include \"%p\"\\n' >~/host/headers.h && cmake -S ~/host -B ~/host && make -sC ~/host && "
     f"~/host/host {DOC}/examples/hello.lua {DOC}/{DEMO}", "first trade: 1 at 100\n"),
)
HOST = {"CMakeLists.txt": """cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
find_package(scriptFramework REQUIRED COMPONENTS host)
add_executable(host main.cpp)
target_link_libraries(host PRIVATE scriptFramework::host)
""", "main.cpp": """#include "headers.h"
#include <iostream>
int main(int, char** argv)
{
    nxRunOptions options;
    options.jobs.emplace_back();
    options.jobs[0].script = argv[1];
    options.jobs[0].name = "hello";
    options.data = {argv[2]};
    return static_cast<int>(nxRun(options, std::cout, std::cerr).Run());
}
"""}


def execute(*command, told=None):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        sys.exit(f"failed with {done.returncode}: {told or ' '.join(map(str, command))}\n{done.stdout}")
    return done.stdout


def make_base():
    part = BASE.with_name(BASE.name + ".part")
    shutil.rmtree(part, ignore_errors=True)
    execute("debootstrap", "--variant=minbase", "bookworm", part, MIRROR)
    (part / "usr/sbin/policy-rc.d").write_text("#!/bin/sh\nexit 101\n")  # nothing is started there
    (part / "usr/sbin/policy-rc.d").chmod(0o755)
    part.rename(BASE)


class Debian:
    """A copy of the bare one, with a user."""

    def __init__(self, root):
        self.root = root
        execute("cp", "-a", f"{BASE}/.", root)
        shutil.copy("/etc/resolv.conf", root / "etc/resolv.conf")
        self.run("useradd --create-home user && apt-get update -qq", "root")

    def run(self, command, user="user"):
        """In processes and mounts of its own, so that nothing of it stays on the machine."""
        home = "/root" if user == "root" else f"/home/{user}"
        return execute("unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", f"--root={self.root}", "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin",
                       "DEBIAN_FRONTEND=noninteractive", "LC_ALL=C.UTF-8", f"HOME={home}", "runuser", "-u", user, "--", "sh", "-c", f"cd; {command}", told=f"in the bare Debian, {user}: {command}")

    def install(self, *names):
        files = [f"/packages/{path.name}" for name in names for path in (self.root / "packages").glob(f"{name}_*")]
        self.run(f"apt-get install -y -qq --no-install-recommends {' '.join(files or names)}", "root")

    def use(self, rows):
        for command, text in rows:
            output = self.run(command)
            if text not in output:
                sys.exit(f"in the bare Debian, {command}\ndoes not say {text!r} but\n{output}")

    def files(self):
        return set(self.run("find / -xdev -path /proc -prune -o -path /home -prune -o -print", "root").splitlines())


def check_removal(debian, before):
    own = set(debian.run(f"dpkg -L {' '.join(OWN)}").split("\n")) - before - {""}
    if len(own) < 300:
        sys.exit(f"the packages hold only {len(own)} files")
    debian.run(f"apt-get purge -y -qq {' '.join(OWN)}", "root")
    after = debian.files()
    left = own & after | {path for path in after - before if any(name in path.lower() for name in ("algoserver", "scriptframework"))}
    left = [path for path in sorted(left) if not debian.run(f"dpkg -S '{path}' 2>/dev/null || true")]  # not folders that others have as well
    if left:
        sys.exit("left when the packages are purged: " + " ".join(left))


if os.geteuid() != 0:
    sys.exit("check_packages.py makes a Debian by debootstrap and works within it, for which it has to be root")
if not BASE.exists():
    make_base()
with tempfile.TemporaryDirectory(dir=BASE.parent) as folder:
    debian = Debian(pathlib.Path(folder))
    (debian.root / "packages").mkdir()
    for package in FOLDER.glob("*.deb"):
        shutil.copy(package, debian.root / "packages")
    before = debian.files()
    debian.install("algoserver")
    debian.use(ALONE)
    summary = debian.run(f"{MARKET_MAKER} 2>/dev/null")
    if summary != (GOLDEN / "market_maker.txt").read_text():
        sys.exit(f"the market maker's run is not {GOLDEN}/market_maker.txt but\n{summary}")
    debian.install("bash-completion", "fish", "lua-check", "man-db", "zsh")
    debian.use(EQUIPPED)
    debian.install("cmake", "g++", "make")
    debian.install("libscriptframework-dev")
    for name, text in HOST.items():
        path = debian.root / "home/user/host" / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(text)
    debian.run("chown -R user /home/user", "root")
    debian.use(LIBRARY)
    check_removal(debian, before)
print("installed, used, removed; nothing is left")
