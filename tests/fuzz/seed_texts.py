"""Inputs for the harnesses that read texts."""


def answers() -> list[bytes]:
    """HTTP answers behind a byte that tells into how large pieces they are cut."""
    said = [
        b"200 OK\r\nContent-Length: 2\r\n\r\n{}",
        b"200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3;x=y\r\nabc\r\n0\r\nA: b\r\n\r\n",
        b"200 OK\r\nTransfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\nab",
        b"200 OK\r\n\r\nuntil the end",
        b"100 Continue\r\n\r\n",
        b"100 Continue\r\n\r\nHTTP/1.1 404 Not Found\r\n\r\n",
        b"204 No Content\r\n\r\n",
        b"308 \r\nLocation: http://x/\r\n\r\n",
        b"401 Unauthorized\r\nContent-Length: 1\r\n\r\nx",
        b"200 OK\r\nContent-Length: 99999999999\r\n\r\nab",
        b"200 OK\r\nContent-Length: 18446744073709551615\r\n\r\n{}",
        b"200 OK\r\nContent-Length: -1\r\n\r\n{}",
        b"200 OK\r\nA: " + b"x" * 3000 + b"\r\n\r\n{}",
    ]
    return [piece + b"HTTP/1.1 " + text for text in said for piece in (b"\0", b"\x83", b"\x05")]


TEXTS: dict[str, list[bytes]] = {
    "json": [
        rb'{"a":[1,2.5,-3e10,null,true,"\ud83d\ude00\u00e9x"],"b":{"c":{}}}',
        b"[123456789012345678901234567890,18446744073709551615,-9223372036854775808,1.8e308]",
        rb'"\ud83d"',
        b"[" * 600,
        b'{"a":1,"a":2,"":[]}',
        b'"\xed\xa0\xbd"',
    ],
    "wire": [
        b'{"ok":{"$map":[["a",1],["b",{"$int":"99999999999999999999"}]]}}',
        b'{"ok":[{"$bytes":"ff00"},{"$real":"inf"},{"$there":0},{"$opaque":["T","t","r"]}]}',
        b'{"error":{"type":"E","text":{"$bytes":"edb28041"},"import":false}}',
        b'{"protocol": 1, "executable": {"$bytes": "2f61"}, "version": "1", "names": [1,2]}',
        b'{"protocol": 1, "executable": {"$bytes": "zz"}, "version": "1", "names": null}',
    ],
    "http": answers(),
    "url": [
        b"http://127.0.0.1:8000/api/health?detailed=true",
        b"http://[::1]:80/x#f",
        b"http://h",
        b"http://::1:8000/",
        b"http://h:99999/ \r\n",
    ],
    "glob": [
        b"*.jpg\na.jpg",
        b"[!a-z]?*[]x]\nQabc",
        b"*a*a*a*a*b\naaaaaaaaaaaaaaaaaaaa",
        "[a-é]\nè".encode(),
        b"[\nx",
        b"**\n\xff",
    ],
    "unicode": [
        "é😀\u2028 x\r\n y\x85".encode(),
        b"\xed\xa0\xbd\xed\xb8\x80\xff\xc3",
        b"  a \n",
        b"\xf4\x90\x80\x80\xc0\xaf\xe0\x80",
    ],
    "numbers": [
        b"123\n-5",
        b"99999999999999999999999\n1e308",
        b"+1_000\n0.5",
        b"nan\ninf",
        b" -7 ",
    ],
    "command_line": [
        b"read\na.jpg\n--json\nx\n--confidence=0.5",
        b"server\nstart\n-d\n--port\n8000\n--workers=4",
        b"server\nlogs\n-fn5",
        b"-h",
        b"mmc-backend\nlocal\n--po\n1",
        b"--version",
        b"gpu-setup\ngpu\n--",
        b"x.jpg\n--region\nkr",
        b"server\nstop\n-f\n--pid\n-1",
        b"serve",
    ],
}
