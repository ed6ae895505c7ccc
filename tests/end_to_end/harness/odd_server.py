"""A server on the port of https that does what no web server would be told to do."""
import socket
import ssl
import threading


class OddServer:
    """Answers each request by `answer(request)`, where a request can be written to, held and left.

    Requests that end without a word are closed. `requests` holds the first lines of all of them.
    """

    def __init__(self, certificate_and_key, answer):
        self.answer, self.requests = answer, []
        self.released = threading.Event()
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(*certificate_and_key)
        self.socket = socket.create_server(("127.0.0.1", 443))
        self.threads = [threading.Thread(target=self._accept)]
        self.threads[0].start()

    def close(self):
        self.released.set()
        self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()
        for thread in self.threads:
            thread.join(10)

    def _accept(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return
            self.threads.append(threading.Thread(target=self._serve, args=(connection,)))
            self.threads[-1].start()

    def _serve(self, connection):
        try:
            with self.context.wrap_socket(connection, server_side=True) as tls:
                request = Request(self, tls)
                self.requests.append(request.line)
                self.answer(request)
        except OSError:
            pass  # the client went away, which is its right


class Request:
    def __init__(self, server, connection):
        self.server, self.connection = server, connection
        head = b""
        while b"\r\n\r\n" not in head:
            piece = connection.recv(4096)
            if not piece:
                break
            head += piece
        self.line = head.decode("latin-1").partition("\r\n")[0]

    def send(self, body, length=None, status="200 OK"):
        """An answer of this body, whose head tells of `length` bytes."""
        length = len(body) if length is None else length
        self.connection.sendall(f"HTTP/1.1 {status}\r\nContent-Length: {length}\r\n"
                                "Connection: close\r\n\r\n".encode() + body)

    def redirect(self, target):
        self.connection.sendall(f"HTTP/1.1 302 Found\r\nLocation: {target}\r\n"
                                "Content-Length: 0\r\nConnection: close\r\n\r\n".encode())

    def hold(self):
        """Says nothing until the server is released or closed."""
        self.server.released.wait()
