#!/usr/bin/env python3
"""Runs a command with an HTTP server on the loopback interface, for tests of HTTP clients.

    http_server.py COMMAND [ARGUMENT...]

The command finds the ports in TEST_HTTP_PORT and TEST_HTTPS_PORT. No client trusts the certificate
for https; without the program openssl that port is 0. The server is also the proxy in http_proxy: of
such a request it finds the whole URL as the path. Exit status: the command's.
"""

import gzip
import http.server
import os
import shutil
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse

TEXT = b"hello from the server"
# The body, and the headers besides Content-Length or in place of it.
PAGES = {
    "text": (TEXT, {"X-Zone": "  12345 ", "x-zone": "6"}),
    "interim": (TEXT, {"X-Zone": "  12345 ", "x-zone": "6"}),
    "slow": (TEXT, {}),
    "cut": (TEXT, {"Content-Length": 22}),
    "gzip": (gzip.compress(TEXT), {"Content-Encoding": "gzip"}),
    "chunked": (b"5\r\nhello\r\n10\r\n from the server\r\n0\r\n\r\n",
                {"Content-Length": None, "Transfer-Encoding": "chunked"}),
}


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def respond(self):
        self.close_connection = True
        content = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        url = urllib.parse.urlsplit(self.path)
        page, _, argument = url.path[1:].partition("/")
        echo = f"{self.command} {self.headers.get('Content-Type', '-')} ".encode() + content
        body, headers = {
            **PAGES,
            "status": (b"status " + argument.encode(), {}),
            "path": (self.path.encode(), {}),
            "echo": (echo, {}),
            "redirect": (b"not this", {"Location": url.query}),  # /redirect/STATUS?TARGET
        }.get(page, (b"no such page", {}))
        if page == "interim":  # a response before the response
            self.wfile.write(b"HTTP/1.1 100 Continue\r\nX-Zone: 1\r\n\r\n")
        self.send_response(int(argument) if page in ("status", "redirect") else 200)
        for name, value in {"Content-Length": len(body), **headers, "Connection": "close"}.items():
            if value is not None:
                self.send_header(name, value)
        self.end_headers()
        for byte in body if self.command != "HEAD" else b"":
            if page == "slow":
                time.sleep(0.05)  # a client cannot have the response before a second
            self.wfile.write(bytes([byte]))

    do_GET = do_HEAD = do_POST = do_PUT = do_DELETE = do_OPTIONS = do_PATCH = respond

    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    # Some tests end a connection early.
    def handle_error(self, request, client_address):
        pass


def serve(server):
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


def serve_untrusted():
    if shutil.which("openssl") is None:
        return 0  # the examples do not need https, and scripts/demo.sh does not install openssl
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    with tempfile.NamedTemporaryFile() as file:
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj",
                        "/CN=localhost", "-keyout", file.name, "-out", file.name],
                       check=True, stdin=subprocess.DEVNULL, capture_output=True)
        context.load_cert_chain(file.name)
    server = Server(("127.0.0.1", 0), Handler)
    server.socket = context.wrap_socket(server.socket, server_side=True)
    return serve(server)


def main():
    port = str(serve(Server(("127.0.0.1", 0), Handler)))
    environment = dict(os.environ, TEST_HTTP_PORT=port, TEST_HTTPS_PORT=str(serve_untrusted()),
                       http_proxy=f"http://127.0.0.1:{port}")
    # The server is a thread of this process, so it cannot outlive it.
    status = subprocess.run(sys.argv[1:], env=environment, check=False).returncode
    # A signal as a shell reports it. Does not wait for requests that the server still handles.
    os._exit(status if status >= 0 else 128 - status)


if __name__ == "__main__":
    main()
