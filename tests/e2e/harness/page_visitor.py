"""A visitor of the service's pages without a browser: reads a page's form and posts it."""

import html.parser
import http.cookiejar
import json
import urllib.parse
import urllib.request

_LIMIT = 10


class _Forms(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.forms = []

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if tag == "form":
            self.forms.append({"action": values.get("action", ""), "fields": {}})
        elif tag == "input" and self.forms and "name" in values:
            self.forms[-1]["fields"][values["name"]] = values.get("value", "")


class PageVisitor:
    """Keeps cookies, as the pages' forms demand, and never leaves this machine."""

    def __init__(self):
        cookies = urllib.request.HTTPCookieProcessor(http.cookiejar.CookieJar())
        self._opener = urllib.request.build_opener(urllib.request.ProxyHandler({}), cookies)

    def read(self, address):
        """The page's source."""
        return self._request(address)

    def decide(self, pairing_page, decision):
        """Posts the pairing page's form with 'approve' or 'deny'; returns the page that follows."""
        forms = _Forms()
        forms.feed(self.read(pairing_page))
        for form in forms.forms:
            if "form_token" in form["fields"]:
                fields = dict(form["fields"], decision=decision)
                return self._request(urllib.parse.urljoin(pairing_page, form["action"]), fields)
        raise LookupError(f"There is nothing to decide on {pairing_page}")

    def link(self, service, device_id):
        """Pairs a desktop without its window, as a preparation; returns its token."""
        started = json.loads(self._request(service + "/api/pc/link/start", {"device_id": device_id}))
        self.decide(started["approve_url"], "approve")
        query = urllib.parse.urlencode({"code": started["code"], "device_id": device_id})
        return json.loads(self.read(f"{service}/api/pc/link/poll?{query}"))["access_token"]

    def _request(self, address, fields=None):
        body = None if fields is None else urllib.parse.urlencode(fields).encode()
        with self._opener.open(address, body, timeout=_LIMIT) as reply:
            return reply.read().decode()
