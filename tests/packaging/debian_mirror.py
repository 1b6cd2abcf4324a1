"""The Debian 12 mirror that this machine's apt reads, and how it is reached."""

from packaging_support import run

SUITE = "bookworm"


def mirrors():
    """What this machine's apt reads of Debian 12: addresses, releases and components."""
    targets = run("apt-get", "indextargets", "--format", "$(SITE)|$(RELEASE)|$(COMPONENT)", "Created-By: Packages")
    sources = [line.split("|") for line in dict.fromkeys(targets.splitlines()) if line.count("|") == 2]
    return [source for source in sources if source[1].split("-")[0] == SUITE and source[2] == "main"]


def main_mirror():
    """The address of the release itself; None where apt reads no Debian 12."""
    return next((site for site, release, _ in mirrors() if release == SUITE), None)


def apt_settings():
    """This machine's settings on how to reach a mirror."""
    return [line for line in run("apt-config", "dump").splitlines()
            if line.lower().startswith(("acquire::http::proxy", "acquire::https::", "acquire::check-"))]


def proxies():
    values = dict(line.rstrip('";').split(' "', 1) for line in apt_settings() if ' "' in line)
    return {scheme: values[f"Acquire::{scheme}::Proxy"] for scheme in ("http", "https")
            if values.get(f"Acquire::{scheme}::Proxy")}
