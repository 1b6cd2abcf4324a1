"""The files that `cmake --install` installs, and where."""

import os

from conftest import BUILD, ID, LOGO, REPOSITORY, run

SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
FILES = {
    "bin/tarnwick-client",
    "libexec/tarnwick-client/Tarnwick",
    "libexec/tarnwick-client/tarnwick-logo.png",
    "share/man/man1/tarnwick-client.1",
    f"share/applications/{ID}.desktop",
    f"share/metainfo/{ID}.metainfo.xml",
    f"share/icons/hicolor/scalable/apps/{ID}.svg",
    *(f"share/icons/hicolor/{size}x{size}/apps/{ID}.png" for size in SIZES),
}


def assert_installed(root):
    assert {str(path.relative_to(root)) for path in root.rglob("*") if not path.is_dir()} == FILES
    link, executable = root / "bin" / "tarnwick-client", root / "libexec" / "tarnwick-client" / "Tarnwick"
    assert not os.path.isabs(os.readlink(link))
    assert link.resolve(strict=True) == executable.resolve() and os.access(link, os.X_OK)
    assert (executable.parent / LOGO.name).read_bytes() == LOGO.read_bytes()


def test_everything_is_below_the_prefix(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", tmp_path / "prefix")
    assert_installed(tmp_path / "prefix")


def test_a_stage_goes_before_the_prefix(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", "/opt/x", "--strip", env={**os.environ, "DESTDIR": str(tmp_path)})
    assert_installed(tmp_path / "opt" / "x")
    assert [path.name for path in tmp_path.iterdir()] == ["opt"]


def test_the_link_leads_from_and_to_the_folders_that_were_chosen(tmp_path):
    chosen = ("-DCMAKE_INSTALL_BINDIR=commands/all", "-DCMAKE_INSTALL_LIBEXECDIR=private", "-DBUILD_TESTING=OFF")
    run("cmake", "-S", REPOSITORY, "-B", tmp_path, "-G", "Ninja", *chosen)
    link = tmp_path / "client" / "bin" / "tarnwick-client"
    assert os.readlink(link) == "../../private/tarnwick-client/Tarnwick"
