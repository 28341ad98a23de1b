#!/usr/bin/env python3
"""Runs a command with an HTTP server on the loopback interface, for tests of HTTP clients.

    http_server.py COMMAND [ARGUMENT...]

The command finds the ports in TEST_HTTP_PORT and TEST_HTTPS_PORT. No client trusts the certificate
for https; without the openssl program that port is 0. The server is also the proxy in http_proxy: of
such a request it finds the whole URL as the path. Exit status: the command's.
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
CHUNKED = {"Transfer-Encoding": "chunked"}
# The headers and the body.
PAGES = {
    "text": ({"Content-Length": 21, "X-Zone": "  12345 "}, TEXT),
    "interim": ({"Content-Length": 21, "X-Zone": "12345"}, TEXT),
    "slow": ({"Content-Length": 21}, TEXT),
    "chunked": (CHUNKED, b"5\r\nhello\r\n10\r\n from the server\r\n0\r\n\r\n"),
    "chunked-cut": (CHUNKED, b"5\r\nhello\r\n"),
    "cut": ({"Content-Length": 22}, TEXT),
    "trickle": ({"Content-Length": 30}, b""),
}


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def respond(self):
        self.close_connection = True
        content = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        url = urllib.parse.urlsplit(self.path)
        page, _, argument = url.path[1:].partition("/")
        if page == "nothing":
            return
        if page == "slow":
            time.sleep(1)  # so that a client cannot have the response before
        if page == "interim":  # a response before the response
            self.wfile.write(b"HTTP/1.1 100 Continue\r\nX-Zone: 1\r\n\r\n")
        headers, body = PAGES.get(page) or self.made_page(page, argument, url.query, content)
        self.send_response(int(argument) if page in ("status", "redirect") else 200)
        for name, value in {**headers, "Connection": "close"}.items():
            self.send_header(name, value)
        self.end_headers()
        if self.command != "HEAD":
            self.wfile.write(body)
        if page == "trickle":
            for _ in range(30):
                self.wfile.write(b"x")
                time.sleep(0.1)

    do_GET = do_HEAD = do_POST = do_PUT = do_DELETE = do_OPTIONS = do_PATCH = respond

    def made_page(self, page, argument, query, content):
        body, headers = b"no such page", {}
        if page == "size":
            body = b"x" * int(argument)
        elif page == "status":
            body = b"status " + argument.encode()
        elif page == "path":
            body = self.path.encode()
        elif page == "echo":
            body = f"{self.command} {self.headers.get('Content-Type', '-')} ".encode() + content
        elif page == "redirect":  # /redirect/STATUS?TARGET
            body, headers = b"not this", {"Location": query}
        elif page == "gzip":
            body = TEXT * 100
            if "gzip" in self.headers.get("Accept-Encoding", ""):
                body, headers = gzip.compress(body), {"Content-Encoding": "gzip"}
        return {"Content-Length": len(body), **headers}, body

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
    port = str(serve(Server(("127.0.0.1", 0), Handler)))
    environment = dict(os.environ, TEST_HTTP_PORT=port, TEST_HTTPS_PORT=str(serve_untrusted()),
                       http_proxy=f"http://127.0.0.1:{port}")
    # The server is a thread of this process, so it cannot outlive it.
    status = subprocess.run(sys.argv[1:], env=environment, check=False).returncode
    # A signal as a shell reports it. Does not wait for requests that the server still handles.
    os._exit(status if status >= 0 else 128 - status)


if __name__ == "__main__":
    main()
