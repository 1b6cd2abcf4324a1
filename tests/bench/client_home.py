"""A HOME for one run of the client, with what the client remembers of the time before."""

import json
import pathlib

from harness.client_process import STATE_FILE

DEVICE = "bench-desktop"


def write_home(folder, origin, token=None):
    """Rewrites the state, which a run may have changed; returns the HOME."""
    home = pathlib.Path(folder)
    state = {"origin": origin, "device_id": DEVICE}
    if token is not None:
        state["access_token"] = token
    file = home / STATE_FILE
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(json.dumps(state), encoding="utf-8")
    return home
