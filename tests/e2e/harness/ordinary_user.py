"""The end-to-end tests run as an ordinary user, even if root starts them."""

import os
import pwd
import subprocess


def become_ordinary(read, written=None):
    """Changes from root to `nobody`, unless `nobody` cannot read these files. Makes the written folder."""
    if written:
        os.makedirs(written, exist_ok=True)
    if os.geteuid() != 0:
        return
    # An existing account: a message bus refuses other users.
    account = pwd.getpwnam("nobody")
    to_nobody = ["setpriv", f"--reuid={account.pw_uid}", f"--regid={account.pw_gid}", "--clear-groups"]
    if not all(subprocess.run([*to_nobody, "test", "-r", path], check=False).returncode == 0 for path in read):
        print(f"As root, since {account.pw_name} may not read {read}", flush=True)
        return
    if written:
        os.chown(written, account.pw_uid, account.pw_gid)
    os.setgroups([])
    os.setresgid(account.pw_gid, account.pw_gid, account.pw_gid)
    os.setresuid(account.pw_uid, account.pw_uid, account.pw_uid)
