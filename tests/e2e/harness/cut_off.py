"""Runs a program as an ordinary user, in a network of its own that ends at this machine: cut_off.py USER GROUP WORD...

It is started in a new network namespace. USER and GROUP are the numbers of an account; only root can become another
one. First it prints, in a line of JSON, who it is and which network devices there are ways through.
"""

import ctypes
import fcntl
import json
import os
import signal
import socket
import struct
import sys

SIOCSIFFLAGS, IFF_UP = 0x8914, 1
PR_SET_PDEATHSIG = 1
PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL = 47, 4


def main():
    user, group, *command = sys.argv[1:]
    bring_loopback_up()
    become(int(user), int(group))
    print(json.dumps({"user": os.geteuid(), "ways": sorted(ways())}), flush=True)
    os.execvp(command[0], command)


def bring_loopback_up():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        fcntl.ioctl(any_socket, SIOCSIFFLAGS, struct.pack("16sh", b"lo", IFF_UP))


def become(user, group):
    if os.geteuid() == 0:
        os.setgroups([])
        os.setresgid(group, group, group)
        os.setresuid(user, user, user)
    libc = ctypes.CDLL(None)
    libc.prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0)
    # Whoever becomes another user is forgotten by the parent's end otherwise.
    libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


def ways():
    """The devices of all routes."""
    with open("/proc/self/net/route", encoding="ascii") as table:
        found = {line.split()[0] for line in table.readlines()[1:]}
    if os.path.exists("/proc/self/net/ipv6_route"):
        with open("/proc/self/net/ipv6_route", encoding="ascii") as table:
            found.update(line.split()[-1] for line in table)
    return found


if __name__ == "__main__":
    main()
