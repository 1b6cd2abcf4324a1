#!/usr/bin/python3
"""Walks through the client on a virtual desktop and leaves pictures: first start, code shown, linked, created."""

import argparse
import os
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness.client_process import ClientProcess  # noqa: E402 (the path comes first)
from harness.page_visitor import PageVisitor  # noqa: E402
from harness.service_process import ServiceProcess  # noqa: E402
from harness.virtual_desktop import VirtualDesktop  # noqa: E402
from harness.waiting import WaitedInVain, leaving_an_account  # noqa: E402
from harness.walk_steps import Walk  # noqa: E402

# High enough for the whole project list, which the window shows a part of at its usual height.
WIDTH, HEIGHT = 1220, 1080


def main():
    options = _options()
    os.makedirs(options.home, exist_ok=True)
    os.makedirs(options.pictures, exist_ok=True)
    with VirtualDesktop(WIDTH, HEIGHT, fill=True, failures=options.pictures) as desktop:
        service = ServiceProcess(options.service, options.home, os.path.join(options.home, "service.log"))
        client = ClientProcess(options.client, desktop, options.home)
        client.write_state(origin=service.address)
        with leaving_an_account():
            Walk(desktop, client, PageVisitor(), options.pictures, say=_say).all_steps()
    return 0


def _options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--client", required=True, help="the client's executable")
    parser.add_argument("--service", required=True, help="the local service's executable")
    parser.add_argument("--home", required=True, help="folder for the client's and the service's data")
    parser.add_argument("--pictures", required=True, help="folder for the pictures")
    return parser.parse_args()


def _say(step):
    print(step, flush=True)


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (WaitedInVain, OSError, RuntimeError, subprocess.SubprocessError) as failure:
        sys.exit("\n".join([f"The walk stopped. {failure}", *getattr(failure, "__notes__", [])]))
    except KeyboardInterrupt:
        sys.exit(130)
