"""A visitor of the service's pages without a browser: reads a page's form and posts it."""

import http.cookiejar
import json
import re
import urllib.parse
import urllib.request

_LIMIT = 10


class PageVisitor:
    """Keeps cookies, which the pages' forms need, and never uses a proxy."""

    def __init__(self):
        cookies = urllib.request.HTTPCookieProcessor(http.cookiejar.CookieJar())
        self._opener = urllib.request.build_opener(urllib.request.ProxyHandler({}), cookies)

    def decide(self, pairing_page, decision):
        """Posts the pairing page's form with 'approve' or 'deny'."""
        token = re.search('name="form_token" value="([^"]*)"', self._request(pairing_page))
        if token is None:
            raise LookupError(f"There is nothing to decide on {pairing_page}")
        page, _, query = pairing_page.partition("?")
        self._request(page, dict(urllib.parse.parse_qsl(query), form_token=token[1], decision=decision))

    def link(self, service, device_id):
        """Links a desktop without its window, as a preparation; returns its token."""
        started = json.loads(self._request(service + "/api/pc/link/start", {"device_id": device_id}))
        self.decide(started["approve_url"], "approve")
        query = urllib.parse.urlencode({"code": started["code"], "device_id": device_id})
        return json.loads(self._request(f"{service}/api/pc/link/poll?{query}"))["access_token"]

    def _request(self, address, fields=None):
        body = None if fields is None else urllib.parse.urlencode(fields).encode()
        with self._opener.open(address, body, timeout=_LIMIT) as reply:
            return reply.read().decode()
