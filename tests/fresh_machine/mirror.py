"""The Debian mirror of the host's apt, and the settings to reach it."""

import re
import subprocess
import urllib.request


def _printed(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def _sites():
    """The addresses that apt uses, by label: "Debian" and perhaps "Debian-Security"."""
    told = _printed("apt-get", "indextargets", "--format", "$(LABEL)|$(SITE)|$(ORIGIN)|$(COMPONENT)")
    targets = [line.split("|") for line in told.splitlines()]
    return {target[0]: target[1] for target in targets if target[2:] == ["Debian", "main"]}


def address():
    """The address of the main archive; None if apt does not use it."""
    return _sites().get("Debian")


def sources(suite):
    """The lines of a sources.list for the suite."""
    sites = _sites()
    lines = [f"deb {sites['Debian']} {suite} main"]
    if "Debian-Security" in sites:
        lines.append(f"deb {sites['Debian-Security']} {suite}-security main")
    return "".join(f"{line}\n" for line in lines)


def settings():
    """The host's apt settings for reaching a mirror."""
    reach = re.compile(r"acquire::(https?::proxy|https::|check-)", re.IGNORECASE)
    return "".join(f"{line}\n" for line in _printed("apt-config", "dump").splitlines() if reach.match(line))


def proxies():
    """The proxies that apt uses, by scheme."""
    return dict(re.findall(r'^Acquire::(https?)::Proxy "(.+)";$', settings(), re.MULTILINE))


def why_unreachable(suite):
    """Why the suite is not available; None if it is."""
    site = address()
    if site is None:
        return "apt uses no Debian mirror here"
    request = urllib.request.Request(f"{site}/dists/{suite}/Release", method="HEAD")
    try:
        opener = urllib.request.build_opener(urllib.request.ProxyHandler(proxies() or None))
        opener.open(request, timeout=20).close()
    except OSError as error:
        return f"the Debian mirror does not give {suite}: {error}"
    return None
