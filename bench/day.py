"""Bytes on the wire, and what a million installs ask of the service in a day."""

INSTALLS = 1_000_000
BUSIEST_HOUR = 0.1  # of the day

# How often an install does each in a day: in all, and how many of these on a new connection.
DAY = {
    "handshake": (1 / 7, 1 / 7),
    "resolution": (0.3, 0.3),
    "product_viewed": (12, 3),
    "category_viewed": (4, 0),
    "product_searched": (2, 0),
    "product_added": (1, 0),
    "product_removed": (0.3, 0),
    "order_completed": (0.1, 0),
    "identify": (0.1, 0),
    "custom": (2, 0),
}
REQUESTS = {"resolution": 3}  # of one; else 1

TEXT = """\
Counted on the sockets, between client and server, with all that TLS says; the headers of TCP and IP are
not in it, some 40 bytes for each packet. The server shows a single certificate: a public chain adds two
or three kilobytes to each new connection. A resolution is a chain of two redirects and the page at its
end.

The day of an install that is assumed: opened three times, each with a new connection to the endpoint of
events; the handshake once a week; a link resolved every third day; events as in the column "a day". Over HTTP/2:
"""
SUM = """\
A million installs then ask for {requests:,.0f} requests a day, {average:,.0f} a second on average and
{peak:,.0f} in the busiest hour, if that has a tenth of the day, on {connections:,.0f} new connections
({connection_peak:,.0f} a second in that hour); {up:,.0f} GB go up and {down:,.0f} GB down, which is
{up_rate:,.0f} and {down_rate:,.0f} Mbit/s in that hour.

The same over HTTP/1.1:
"""


def both(up, down):
    return f"{up:,.0f} / {down:,.0f}"


def bytes_of_day(row):
    """Up and down, for all installs."""
    times, fresh = DAY[row["what"]]
    return [INSTALLS * (fresh * row["new" + name.capitalize()] + (times - fresh) * row[name])
            for name in ("up", "down")]


def day_line(row):
    up, down = bytes_of_day(row)
    return [row["what"], both(row["newUp"], row["newDown"]), both(row["up"], row["down"]),
            f"{DAY[row['what']][0]:.3g}", f"{up / 1e9:,.2f} / {down / 1e9:,.2f} GB"]


def sums(rows):
    requests = sum(INSTALLS * times * REQUESTS.get(what, 1) for what, (times, _) in DAY.items())
    connections = sum(INSTALLS * fresh for _, fresh in DAY.values())
    up, down = (sum(part) for part in zip(*(bytes_of_day(row) for row in rows)))
    hour = BUSIEST_HOUR / 3600
    return SUM.format(requests=requests, average=requests / 86400, peak=requests * hour,
                      connections=connections, connection_peak=connections * hour, up=up / 1e9,
                      down=down / 1e9, up_rate=up * hour * 8 / 1e6, down_rate=down * hour * 8 / 1e6)


def text(rows, table):
    """The tables of the wire; `table` writes one from heads and lines."""
    heads = ["bytes up / down", "new connection", "the same again"]
    http2 = [row for row in rows if row["protocol"] == "http2"]
    http1 = [row for row in rows if row["protocol"] == "http1"]
    return "\n".join([
        TEXT,
        table(heads + ["a day", "of a million installs in a day"], [day_line(row) for row in http2]),
        sums(http2),
        table(heads, [day_line(row)[:3] for row in http1])])
