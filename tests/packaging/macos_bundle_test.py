"""The bundle for macOS, as far as it can be tested elsewhere: built with CMake's rules for macOS and the preset's
settings, but with this system's compiler and libraries."""

import json
import pathlib
import plistlib
import re
import shlex

import pytest
from conftest import ID, LOGO, REPOSITORY, empty_folder, needs, run
from harness.child_process import ChildProcess
from harness.virtual_desktop import VirtualDesktop
from harness.waiting import wait_until

TOOLCHAIN = REPOSITORY / "tests" / "packaging" / "macos" / "apple_rules.cmake"

# Replaces Qt's deployment tool and records its arguments.
MACDEPLOYQT = """#!/bin/sh
printf '%s\\n' "$PWD" "$@" >'{record}'
"""


def preset_settings():
    presets = json.loads((REPOSITORY / "CMakePresets.json").read_text(encoding="utf-8"))["configurePresets"]
    settings = {preset["name"]: preset["cacheVariables"] for preset in presets}
    return [f"-D{name}={value}" for name, value in (settings["release"] | settings["macos"]).items()]


@pytest.fixture(scope="module", name="folder")
def installed_bundle():
    """The folder with the build and with Applications/Tarnwick.app."""
    needs("clang++")
    folder = empty_folder("macos")
    tool = folder / "macdeployqt"
    tool.write_text(MACDEPLOYQT.format(record=folder / "deployed"), encoding="utf-8")
    tool.chmod(0o755)
    settings = [f"--toolchain={TOOLCHAIN}", f"-DMACDEPLOYQT_EXECUTABLE={tool}", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"]
    run("cmake", "-S", REPOSITORY, "-B", folder / "build", "-G", "Ninja", *preset_settings(), *settings)
    run("cmake", "--build", folder / "build", limit=300)
    run("cmake", "--install", folder / "build", "--prefix", folder / "Applications")
    return folder


@pytest.fixture(name="bundle")
def bundle_path(folder):
    return folder / "Applications" / "Tarnwick.app"


@pytest.fixture(name="compile_command")
def client_compile_command(folder):
    """The compile command of the client, which is one translation unit."""
    commands = json.loads((folder / "build" / "compile_commands.json").read_text(encoding="utf-8"))
    (unit,) = [command for command in commands if "/TarnwickClient.dir/Unity/" in command["file"]]
    return unit


def test_nothing_is_installed_but_the_bundle(bundle):
    assert {str(path.relative_to(bundle.parent)) for path in bundle.parent.rglob("*") if path.is_file()} == {
        "Tarnwick.app/Contents/Info.plist",
        "Tarnwick.app/Contents/MacOS/Tarnwick",
        "Tarnwick.app/Contents/Resources/tarnwick.icns",
        "Tarnwick.app/Contents/Resources/tarnwick-logo.png",
    }
    assert (bundle / "Contents" / "Resources" / LOGO.name).read_bytes() == LOGO.read_bytes()


def test_the_property_list_is_complete(bundle):
    said = plistlib.loads((bundle / "Contents" / "Info.plist").read_bytes())
    version = re.search(r"TARNWICK_VERSION (\S+)\)", (REPOSITORY / "cmake/Product.cmake").read_text(encoding="utf-8"))[
        1
    ]
    wanted = {
        "CFBundleIdentifier": ID,
        "CFBundleName": "Tarnwick",
        "CFBundleExecutable": "Tarnwick",
        "CFBundleIconFile": "tarnwick.icns",
        "CFBundlePackageType": "APPL",
        "CFBundleShortVersionString": version,
        "CFBundleVersion": version,
        "LSMinimumSystemVersion": "11.0",
        "NSHighResolutionCapable": True,
        "NSPrincipalClass": "NSApplication",
    }
    assert said | wanted == said and "" not in said.values()


def test_installing_deploys_qt_into_the_bundle(folder, bundle):
    place, app, *_ = (folder / "deployed").read_text(encoding="utf-8").splitlines()
    assert (pathlib.Path(place) / app).resolve() == bundle.resolve()


def test_it_is_compiled_for_both_processors_and_the_oldest_system(compile_command):
    words = shlex.split(compile_command["command"])
    assert {words[place + 1] for place, word in enumerate(words) if word == "-arch"} == {"arm64", "x86_64"}
    assert "-mmacosx-version-min=11.0" in words


def test_its_program_finds_the_logo(bundle):
    needs("Xvfb", "openbox", "xprop")
    with VirtualDesktop() as desktop:
        environment = desktop.environment | {"QT_QPA_PLATFORM": "xcb"}
        ChildProcess([str(bundle / "Contents" / "MacOS" / "Tarnwick")], desktop.path("log"), environment, folder="/")

        def asked(*words):
            return run("xprop", *words, env=environment)

        window = wait_until(lambda: re.search("0x[0-9a-f]+", asked("-root", "_NET_CLIENT_LIST")), "the window")[0]
        icon = asked("-id", window, "-notype", "-f", "_NET_WM_ICON", "32c", "=$0,$1\\n", "_NET_WM_ICON")
        assert icon == "_NET_WM_ICON=256,256\n"


def test_the_client_built_by_itself_is_a_bundle_with_the_logo_too(tmp_path):
    needs("clang++")
    run("cmake", "-S", REPOSITORY / "client", "-B", tmp_path, "-G", "Ninja", f"--toolchain={TOOLCHAIN}")
    logo = f"Tarnwick.app/Contents/Resources/{LOGO.name}"
    run("cmake", "--build", tmp_path, "--target", logo)
    assert (tmp_path / logo).read_bytes() == LOGO.read_bytes()


def test_the_sources_include_headers_of_cpp_and_qt_only():
    """Only their names have no dot and no slash; system headers have one."""
    sources = [path for path in (REPOSITORY / "client").rglob("*") if path.suffix in (".cpp", ".h")]
    included = {name for path in sources for name in re.findall(r"#\s*include\s*<(.+)>", path.read_text("utf-8"))}
    assert "QString" in included and not [name for name in included if re.search(r"[./]", name)]


@pytest.mark.parametrize("system", ["this system", "macOS"])
def test_the_sources_compile_with_clang_and_its_standard_library(compile_command, system):
    folder = empty_folder("macos-sources")
    unit = pathlib.Path(compile_command["file"])
    copies = {path: folder / path.relative_to(REPOSITORY) for path in (REPOSITORY / "client").rglob("*.[ch]*")}
    for path, copy in [*copies.items(), (unit, folder / unit.name)]:
        text = path.read_text(encoding="utf-8").replace(f"{REPOSITORY}/client", f"{folder}/client")
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text(as_on_macos(text) if system == "macOS" else text, encoding="utf-8")
    command = compile_command["command"].replace(str(unit), str(folder / unit.name))
    _, *words = shlex.split(command.replace(f"{REPOSITORY}/client", f"{folder}/client"))
    compiler = ["clang++", "-stdlib=libc++", "-fsyntax-only", "-Werror"]
    assert run(*compiler, *words, cwd=compile_command["directory"]) == ""


def as_on_macos(text):
    """Replaces each condition on the system by its value on a Mac, except in Qt's headers, which would not compile."""
    text = re.sub(r"defined\(Q_OS_(MACOS|DARWIN|UNIX)\)", "1", text)
    text = re.sub(r"defined\(Q_OS_(WIN|LINUX)\)", "0", text)
    assert not re.search(r"Q_OS_|__APPLE__|__linux__|__unix__|_WIN32|__has_include", text)
    return text
