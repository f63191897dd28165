"""An FTP server for one test: prints its port, then serves a directory until it is killed.

Usage: ftp_server.py DIRECTORY USER PASSWORD [PORT [HOLD GATE]]

Users begin in "/home" of the directory. With HOLD, it stops in the middle of every file after that
many bytes, until somebody has opened the pipe GATE for writing.
"""
import logging
import os
import sys

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.filesystems import AbstractedFS
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer

logging.disable(logging.CRITICAL)
directory, user, password = sys.argv[1:4]
port = int(sys.argv[4]) if len(sys.argv) > 4 else 0
hold = int(sys.argv[5]) if len(sys.argv) > 5 else None


class HeldFile:
    def __init__(self, file):
        self.file = file

    def __getattr__(self, name):
        return getattr(self.file, name)

    def read(self, size):
        left = hold - self.file.tell()
        if left > 0:
            return self.file.read(min(size, left))
        if left == 0:
            os.close(os.open(sys.argv[6], os.O_RDONLY))
        return self.file.read(size)


class Files(AbstractedFS):
    def open(self, filename, mode):
        file = super().open(filename, mode)
        return file if hold is None else HeldFile(file)


class Handler(FTPHandler):
    authorizer = DummyAuthorizer()
    abstracted_fs = Files
    auth_failed_timeout = 0
    use_sendfile = hold is None

    def on_login(self, username):
        self.fs.cwd = "/home"


Handler.authorizer.add_user(user, password, directory)
server = FTPServer(("127.0.0.1", port), Handler)
print(server.address[1], flush=True)
server.serve_forever()
