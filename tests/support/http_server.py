#!/usr/bin/env python3
"""Runs a command with an HTTP server on the loopback interface, for tests of HTTP clients.

    http_server.py COMMAND [ARGUMENT...]

The command finds the ports in TEST_HTTP_PORT and TEST_HTTPS_PORT. The certificate for https is one
that nobody trusts; without the openssl program that port is 0. Exit status: the command's.
"""

import gzip
import http.server
import os
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse

TEXT = b"hello from the server"
# Long enough that no client can take it for arrived, short enough for a test.
SLOW_SECONDS = 1
TRICKLE_SECONDS = 0.1


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def answer(self):
        self.close_connection = True
        length = int(self.headers.get("Content-Length", 0))
        self.request_body = self.rfile.read(length)
        self.url = urllib.parse.urlsplit(self.path)
        page, _, self.argument = self.url.path[1:].partition("/")
        method = getattr(self, "page_" + page.replace("-", "_"), None)
        if method is None:
            self.send(b"no such page", status=404)
        else:
            method()

    do_GET = do_HEAD = do_POST = do_PUT = do_DELETE = do_OPTIONS = do_PATCH = answer

    def head(self, headers, status=200):
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name, value)
        self.send_header("Connection", "close")
        self.end_headers()

    def send(self, body, status=200, **headers):
        self.head({"Content-Length": len(body), **headers}, status)
        if self.command != "HEAD":
            self.wfile.write(body)

    def send_chunks(self, *chunks):
        self.head({"Transfer-Encoding": "chunked"})
        for chunk in chunks:
            self.wfile.write(b"%x\r\n%s\r\n" % (len(chunk), chunk))

    def page_text(self):
        self.send(TEXT, **{"X-Five": "  12345 "})

    def page_empty(self):
        self.send(b"")

    def page_no_content(self):
        self.head({}, 204)

    def page_unannounced(self):
        self.head({})
        self.wfile.write(TEXT)

    def page_chunked(self):
        self.send_chunks(TEXT[:5], TEXT[5:], b"")

    def page_chunked_cut(self):
        self.send_chunks(TEXT[:5])

    def page_gzip(self):
        if "gzip" in self.headers.get("Accept-Encoding", ""):
            self.send(gzip.compress(TEXT * 100), **{"Content-Encoding": "gzip"})
        else:
            self.send(TEXT * 100)

    def page_nul(self):
        self.send(b"a\0b\0")

    def page_size(self):
        self.send(b"x" * int(self.argument))

    def page_cut(self):
        self.head({"Content-Length": len(TEXT) + 1})
        self.wfile.write(TEXT)

    def page_claims_4_gib(self):
        self.head({"Content-Length": 0xFFFFFFFF})
        self.wfile.write(TEXT)

    def page_nothing(self):
        self.connection.close()

    def page_nonsense(self):
        self.wfile.write(b"this is not HTTP\r\n\r\n")

    def page_slow(self):
        time.sleep(SLOW_SECONDS)
        self.send(TEXT)

    def page_trickle(self):
        self.head({"Content-Length": 1000})
        for _ in range(1000):
            self.wfile.write(b"x")
            self.wfile.flush()
            time.sleep(TRICKLE_SECONDS)

    def page_echo(self):
        told = f"{self.command} {self.headers.get('Content-Type', '-')} "
        self.send(told.encode() + self.request_body)

    def page_path(self):
        self.send(self.path.encode())

    def page_status(self):
        self.send(b"status " + self.argument.encode(), status=int(self.argument))

    # /redirects/N leads N times to the next, then to /text.
    def page_redirects(self):
        left = int(self.argument) - 1
        self.send(b"not this", status=302, Location=f"/redirects/{left}" if left > 0 else "../text")

    # /redirect/STATUS?TARGET
    def page_redirect(self):
        self.send(b"not this", status=int(self.argument), Location=self.url.query)

    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    # A client that has enough goes away, and that is what some tests want.
    def handle_error(self, request, client_address):
        pass


def serve(server):
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


def serve_untrusted():
    with tempfile.TemporaryDirectory() as folder:
        key, certificate = os.path.join(folder, "key"), os.path.join(folder, "certificate")
        try:
            subprocess.run(
                ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                 "-nodes", "-keyout", key, "-out", certificate, "-days", "2", "-subj",
                 "/CN=localhost", "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1"],
                check=True, stdin=subprocess.DEVNULL, capture_output=True)
        except FileNotFoundError:
            return 0
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
    server = Server(("127.0.0.1", 0), Handler)
    server.socket = context.wrap_socket(server.socket, server_side=True)
    return serve(server)


def main():
    ports = {"TEST_HTTP_PORT": serve(Server(("127.0.0.1", 0), Handler)),
             "TEST_HTTPS_PORT": serve_untrusted()}
    environment = dict(os.environ, **{name: str(port) for name, port in ports.items()})
    # The server is a thread of this process, so it cannot outlive it.
    try:
        status = subprocess.run(sys.argv[1:], env=environment, check=False).returncode
    except OSError as error:
        print(f"http_server: {error}", file=sys.stderr)
        status = 127
    # A signal as a shell reports it. Does not wait for requests that the server still handles.
    os._exit(status if status >= 0 else 128 - status)


if __name__ == "__main__":
    main()
