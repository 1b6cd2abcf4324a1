"""All places that name a release agree."""

import email.utils
import re
import xml.etree.ElementTree

from conftest import ID, REPOSITORY


def found(pattern, name):
    """All matches in a file, as (version, date)."""
    return re.findall(pattern, (REPOSITORY / name).read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)


def test_every_list_of_releases_has_the_same_versions_and_dates():
    for_users = found(r"^## (\d\S+) - (\d{4}-\d{2}-\d{2})$", "CHANGELOG.md")
    for_packagers = [
        (version, email.utils.parsedate_to_datetime(date).date().isoformat())
        for version, date in found(r"^tarnwick-client \((\S+)\).*?^ -- [^>]*>  ([^\n]*)$", "debian/changelog")
    ]
    metainfo = xml.etree.ElementTree.parse(REPOSITORY / "packaging" / "linux" / f"{ID}.metainfo.xml")
    for_desktops = [(release.get("version"), release.get("date")) for release in metainfo.iter("release")]
    assert for_users and for_users == for_packagers == for_desktops


def test_the_newest_release_is_the_version_of_the_build():
    (version,) = found(r"^set\(TARNWICK_VERSION (\S+)\)$", "cmake/Product.cmake")
    assert found(r"^## (\d\S+) - ", "CHANGELOG.md")[0] == version
