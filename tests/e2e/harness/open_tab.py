"""Opens an address in a new tab of a browser that runs already: open_tab.py PROFILE ADDRESS

A Chromium without a window takes no address from a second one that is started with its profile, as one with a window
would. Its port for developers takes it.
"""

import os
import sys
import urllib.parse
import urllib.request

# In seconds.
_LIMIT = 10


def main():
    profile, address = sys.argv[1:]
    with open(os.path.join(profile, "DevToolsActivePort"), encoding="ascii") as source:
        port = int(source.readline())
    request = urllib.request.Request(f"http://127.0.0.1:{port}/json/new?{urllib.parse.quote(address, safe='')}",
                                     method="PUT")
    urllib.request.build_opener(urllib.request.ProxyHandler({})).open(request, timeout=_LIMIT).close()


if __name__ == "__main__":
    main()
