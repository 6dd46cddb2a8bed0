"""Where redirects lead, against the program curl, both through the sandbox: redirects.py PROGRAM SANDBOX"""

import json
import re
import subprocess
import sys
import tempfile

import comparison

ORIGIN = "https://links.shop.example"
STATUSES = [301, 302, 303, 307, 308]
TARGETS = [
    "https://shop.example/products/42?utm_source=mail",
    "http://shop.example/plain", "HTTPS://SHOP.Example/Upper", "https://shop.example",
    "https://shop.example?only=query", "https://shop.example:443/port",
    "//b.example/scheme-relative", "//b.example", "//b.example?q", "/absolute/path", "/",
    "relative", "relative/deeper", "./here", "../up", "../../far/../up", "../../../../../beyond",
    "/a/./b/../c", "/a/b/..", "/a/b/.", "...", "?query=only", "?", "?a=/../b", "x?y=../z",
    "/a b/c d?e=f g", "/%61%20%2F%2f", "/50%", "/%zz?%", "/u:p@x", "/with:colon",
    "/semi;colon?a;b", "/back\\slash", "/br[ack]ets{}|^`\"<>", "/ü?ü=ä",
    "/frag#part", "https://shop.example/x#f?q", "?q#f", "https://user:pw@shop.example/in",
    "https://SHOP.example.:443/dot", "https://127.0.0.1/ip", "  /blanks  ", "", None,
]
# Each leads to the place it comes from, as RFC 3986 has it, and so again and again.
SAME_PLACE = [
    "#only",  # curl drops the last segment and the query
    "#",  # and the mark, too
]
# What is not loaded is the destination; curl stays where it was, or takes three slashes for two.
NOT_LOADED = {target: target for target in [
    "shopapp://product/42", "shopapp:product", "tel:123", "mailto:a@b.example", "a:b@c/d?x",
    "SHOPAPP://Upper", "ftp://shop.example/x", "file:///etc/hosts"]}
NOT_LOADED |= {"//": "https://", "///three": "https:///three"}
# curl takes each status from 300 to 399 for a redirect.
NO_REDIRECTS = [300, 304, 305, 306]
LONGEST = 20


def cases():
    for status in STATUSES:
        for target in [*TARGETS, *SAME_PLACE, *NOT_LOADED]:
            yield status, target
    for status in (200, 201, 400, 404, 500, *NO_REDIRECTS):
        yield status, "/not/followed"


def scenario(places):
    answers = [{"at": f"{ORIGIN}/from{i}/deep/down", "status": status, "body": "",
                "headers": {} if target is None else {"Location": target}}
               for i, (status, target) in enumerate(places)]
    hosts = [{"at": f"https://{host}/host", "status": 200} for host in ("shop.example", "b.example")]
    return json.dumps({"answers": answers + hosts})


def start_sandbox(folder, text):
    with open(f"{folder}/scenario.json", "w", encoding="utf-8") as file:
        file.write(text)
    with open(f"{folder}/said", "w+", encoding="utf-8") as said:
        sandbox = subprocess.Popen([sys.argv[2], "--port", "0", "--state", folder, "--scenario",
                                    f"{folder}/scenario.json"], stdout=subprocess.PIPE, stderr=said,
                                   text=True)
        head = "".join(sandbox.stdout.readline() for _ in range(3))
        told = re.search(r"HTTPS:.*:(\d+)\nHTTP:.*:(\d+)\nAuthority: (.*)\n", head)
        if not told:
            sandbox.kill()
            sandbox.wait()
            said.seek(0)
            sys.exit(f"the sandbox did not start: {head}{said.read()}")
    return sandbox, *told.groups()


def curled(urls, authority, port, http_port):
    """What curl says of each: the last status, or 0, the redirects, and the last URL."""
    shown = r"%{http_code} %{num_redirects} %{url_effective}\n"
    common = ["silent", "location", f"cacert = {authority}", f"max-redirs = {LONGEST}", 'output = "/dev/null"',
              f'write-out = "{shown}"', f'connect-to = ":443:127.0.0.1:{port}"',
              f'connect-to = ":80:127.0.0.1:{http_port}"']
    config = "\nnext\n".join("\n".join([f'url = "{url}"', *common]) for url in urls)
    answered = subprocess.run(["curl", "--disable", "--config", "-"], input=config,
                              capture_output=True, text=True, check=False)
    return answered.stdout.splitlines()


def one_form(line):
    """Status, redirects and URL in one of the forms in which both may show them."""
    status, redirects, url = line.split(" ", 2)
    scheme, rest = url.split(":", 1)
    url = scheme.lower() + ":" + rest.removesuffix("?").replace("+", "%20")
    url = re.sub("^(https?://[^/?#]+)(?=[?#]|$)", r"\1/", url)
    url = re.sub("%[0-9a-f]{2}", lambda escape: escape[0].upper(), url)
    return "0" if int(redirects) == LONGEST else status, redirects, url


def main():
    places = list(cases())
    urls = [f"{ORIGIN}/from{i}/deep/down?kept=no" for i in range(len(places))]
    with tempfile.TemporaryDirectory() as folder:
        sandbox, port, http_port, authority = start_sandbox(folder, scenario(places))
        try:
            ours = comparison.answers_to("load", urls, [authority, port, http_port])
            theirs = curled(urls, authority, port, http_port)
        finally:
            sandbox.terminate()
            sandbox.wait()
    compared = []
    for url, (status, target), our, their in zip(urls, places, ours, theirs, strict=True):
        if status in NO_REDIRECTS:
            compared.append(((status, target), our, f"{status} 0 {url}"))
        elif target in SAME_PLACE:
            compared.append(((status, target), our, f"0 {LONGEST} {url}{target}"))
        elif target in NOT_LOADED:
            compared.append(((status, target), our, f"0 1 {NOT_LOADED[target]}"))
        else:
            compared.append(((status, target), one_form(our), one_form(their)))
    comparison.compare(compared)


main()
