"""An account without any rights of its own, for everything that a person does and root must not do in their place."""

import contextlib
import os
import pwd

# It has to be known to this machine, too: a message bus serves nobody else.
ACCOUNT = pwd.getpwnam("nobody")

# Goes before a command of root's, which then runs under the account. It ends with its parent all the same.
AS_ACCOUNT = ("setpriv", "--reuid", str(ACCOUNT.pw_uid), "--regid", str(ACCOUNT.pw_gid), "--clear-groups",
              "--pdeathsig", "keep")


@contextlib.contextmanager
def being_ordinary():
    """What root's process starts inside belongs to the account."""
    groups = os.getgroups()
    os.setgroups([])
    os.setresgid(ACCOUNT.pw_gid, ACCOUNT.pw_gid, 0)
    os.setresuid(ACCOUNT.pw_uid, ACCOUNT.pw_uid, 0)
    try:
        yield
    finally:
        os.setresuid(0, 0, 0)
        os.setresgid(0, 0, 0)
        os.setgroups(groups)
