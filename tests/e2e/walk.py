"""Walks through the client on a virtual desktop and saves pictures: first start, code shown, linked, created."""

import argparse
import functools
import os
import shutil
import subprocess
import sys

from harness.client_process import ClientProcess
from harness.service_process import ServiceProcess
from harness.virtual_desktop import VirtualDesktop
from harness.waiting import WaitedInVain, leaving_an_account
from harness.walk_steps import Walk

# High enough for the whole project list, which does not fit at the initial size.
SIZE = 1220, 1080


def main():
    options = _options()
    shutil.rmtree(options.home, ignore_errors=True)
    os.makedirs(options.home)
    os.makedirs(options.pictures, exist_ok=True)
    with VirtualDesktop(*SIZE, failures=options.pictures) as desktop:
        service = ServiceProcess(options.home, os.path.join(options.home, "service.log"))
        client = ClientProcess(options.client, desktop, options.home)
        client.write_state(origin=service.address)
        with leaving_an_account():
            Walk(desktop, client, options.pictures, say=functools.partial(print, flush=True), size=SIZE).all_steps()
    return 0


def _options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--client", required=True, help="the client's executable")
    parser.add_argument("--home", required=True, help="folder for the client's and the service's data, emptied first")
    parser.add_argument("--pictures", required=True, help="folder for the pictures")
    return parser.parse_args()


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (WaitedInVain, OSError, RuntimeError, subprocess.SubprocessError) as failure:
        sys.exit("\n".join([f"The walk stopped. {failure}", *getattr(failure, "__notes__", [])]))
    except KeyboardInterrupt:
        sys.exit(130)
