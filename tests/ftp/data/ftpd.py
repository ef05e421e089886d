# Anonymous FTP on 127.0.0.1 for the tests: read-only root, writable /incoming;
# every command line received is appended to the commands log as vsftpd logs it.
import sys
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer

root, port, pasv_min, log = sys.argv[1:5]
seen = open(log, "ab", buffering=0)


class Handler(FTPHandler):
    def found_terminator(self):
        seen.write(b'FTP command: Client "", "' + b"".join(self._in_buffer) + b'"\n')
        FTPHandler.found_terminator(self)


authorizer = DummyAuthorizer()
authorizer.add_anonymous(root, perm="elr")
authorizer.override_perm("anonymous", root + "/incoming", "elradfmwMT", recursive=True)
Handler.authorizer = authorizer
Handler.passive_ports = range(int(pasv_min), int(pasv_min) + 50)
FTPServer(("127.0.0.1", int(port)), Handler).serve_forever()
