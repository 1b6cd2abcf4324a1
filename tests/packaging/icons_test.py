"""The images in the repository are what tools/icons makes of the drawing."""

import pytest
from conftest import LOGO, REPOSITORY, needs, run

ICONS = REPOSITORY / "packaging" / "icons"


@pytest.fixture(scope="module", name="fresh")
def fresh_icons(tmp_path_factory):
    needs("rsvg-convert", "png2icns", "icns2png", "compare")
    folder = tmp_path_factory.mktemp("icons")
    run(REPOSITORY / "tools" / "icons", folder)
    return folder


def assert_alike(image, other):
    """Allows slightly different colours, as other renderer versions make them, and any colour in transparent pixels."""
    run(
        "compare", "-metric", "AE", "-fuzz", "4%", "-background", "black", "-alpha", "background", image, other, "null:"
    )


@pytest.mark.parametrize("name", sorted(path.name for path in ICONS.glob("*.png")))
def test_an_icon_is_the_drawing_in_its_size(fresh, name):
    assert run("identify", "-format", "%wx%h", ICONS / name) == f"{name[:-4]}x{name[:-4]}"
    assert_alike(ICONS / name, fresh / name)


def test_the_tree_has_every_icon_that_is_made(fresh):
    assert {path.name for path in ICONS.iterdir()} == {path.name for path in fresh.iterdir()} - {LOGO.name}


def test_the_clients_logo_is_the_drawing(fresh):
    assert_alike(LOGO, fresh / LOGO.name)


def test_the_icon_file_for_macos_holds_the_drawing_in_every_size(fresh, tmp_path):
    run("icns2png", "--extract", "--output", tmp_path, ICONS / "tarnwick.icns")
    sizes = (16, 32, 48, 128, 256, 512)
    assert {path.name for path in tmp_path.iterdir()} == {f"tarnwick_{size}x{size}x32.png" for size in sizes}
    for size in sizes:
        assert_alike(tmp_path / f"tarnwick_{size}x{size}x32.png", fresh / f"{size}.png")
