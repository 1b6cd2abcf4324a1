"""Runs the service: python3 -m tarnwick [--data FILE] [--port PORT]"""

import argparse
import logging
import signal
import sqlite3
import sys

import waitress

from tarnwick.application import create_app
from tarnwick.store import Store

ADDRESS = "127.0.0.1"  # There is no password, so no other machine may reach it.

LIMITS = {
    "threads": 1,  # All requests share one database connection.
    "max_request_body_size": 64 * 1024 + 1,  # Waitress refuses this size and more.
    "max_request_header_size": 16 * 1024,
    "channel_timeout": 30,
}


def main():
    options = read_options()
    # With one thread, Waitress would warn about every request that waits.
    logging.getLogger("waitress.queue").setLevel(logging.ERROR)
    try:
        app = create_app(Store(options.data))
    except (OSError, sqlite3.Error) as error:
        sys.exit(f"tarnwick: cannot use the data file: {error}")
    try:
        server = waitress.create_server(app, host=ADDRESS, port=options.port, ident=None, **LIMITS)
    except OSError:
        sys.exit(f"tarnwick: cannot listen on port {options.port}; is it in use?")
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda *_: sys.exit())
    print(f"Tarnwick service on http://{ADDRESS}:{server.effective_port}", flush=True)
    server.run()


def read_options():
    parser = argparse.ArgumentParser(
        prog="python3 -m tarnwick",
        description="A local stand-in of the Tarnwick hosting service. It listens on 127.0.0.1 only and prints its "
        "address on the first line. There is one account and no password: anyone who can open its pages on this "
        "machine acts as the account's owner.",
    )
    parser.add_argument("--port", type=port, default=0, help="the TCP port; 0, the default, takes any free one")
    parser.add_argument(
        "--data",
        metavar="FILE",
        default=":memory:",
        help="the SQLite file that keeps links and projects after a restart; without it they are lost at the end",
    )
    return parser.parse_args()


def port(text):
    number = int(text)
    if not 0 <= number <= 65535:
        raise ValueError
    return number


if __name__ == "__main__":
    main()
