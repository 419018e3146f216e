"""A Wayland compositor that shows nothing: it offers what a test names, says which window is in front, and notes what it is asked.
It stands in for compositors that no package brings, and for those that need more than a test has."""
import array
import os
import socket
import struct
import threading

FIRST_OF_SERVER = 0xFF000000  # the first object that a compositor may name
TOPLEVELS, SEAT, KEYBOARDS = "zwlr_foreign_toplevel_manager_v1", "wl_seat", "zwp_virtual_keyboard_manager_v1"
ACTIVATED = 2


class Compositor:
    """Serves at a path until `end`. Of the requests it keeps (interface, opcode, words), those of unknown objects left out.
    Where `syncs` says how many it answers, it hangs up at the next one."""

    def __init__(self, path, offers, front="", keymap=b"", syncs=-1):
        self.offers, self.front, self.keymap, self.requests, self.clients = offers, front, keymap, [], []
        self.syncs = syncs
        self.listener = socket.socket(socket.AF_UNIX)
        self.path = str(path)
        self.listener.bind(self.path)
        self.listener.listen()
        threading.Thread(target=self._accept, daemon=True).start()

    def end(self):
        self.listener.shutdown(socket.SHUT_RDWR)
        for client in self.clients:
            client.shutdown(socket.SHUT_RDWR)
        self.clients.clear()
        os.unlink(self.path)

    def _accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            self.clients.append(client)
            threading.Thread(target=self._serve, args=[client], daemon=True).start()

    def _serve(self, client):
        objects, data = {1: "wl_display"}, b""
        try:
            while received := client.recv(65536):  # files that come with it are closed by nobody reading them
                data += received
                while len(data) >= 8 and len(data) >= (size := struct.unpack("=IHH", data[:8])[2]):
                    thing, opcode, _ = struct.unpack("=IHH", data[:8])
                    self._take(client, objects, thing, opcode, data[8:size])
                    data = data[size:]
        except OSError:
            pass

    def _take(self, client, objects, thing, opcode, body):
        words = struct.unpack(f"={len(body) // 4}I", body)
        interface = objects.get(thing)
        if interface == "wl_display" and opcode == 0 and self.syncs == 0:
            client.shutdown(socket.SHUT_RDWR)
        elif interface == "wl_display" and opcode == 0:  # sync
            self.syncs -= 1
            self._tell(client, words[0], 0, 0)
            self._tell(client, 1, 1, words[0])  # delete_id
        elif interface == "wl_display" and opcode == 1:  # get_registry
            objects[words[0]] = "wl_registry"
            for name, offered in enumerate(self.offers, 1):
                self._tell(client, words[0], 0, name, offered, 5 if offered == SEAT else 3 if offered == TOPLEVELS else 1)
        elif interface == "wl_registry":  # bind
            objects[words[-1]] = self.offers[words[0] - 1]
            self._begin(client, words[-1], objects[words[-1]])
        elif interface == SEAT and opcode == 1:  # get_keyboard
            with memory_file(self.keymap) as file:
                self._tell(client, words[0], 0, 1, len(self.keymap), files=[file.fileno()])
        elif interface == KEYBOARDS:  # create_virtual_keyboard
            objects[words[1]] = "zwp_virtual_keyboard_v1"
        elif interface:
            self.requests.append((interface, opcode, words))

    def _begin(self, client, thing, interface):
        if interface == SEAT:
            self._tell(client, thing, 0, 2)  # capabilities: a keyboard
        elif interface == TOPLEVELS:
            window = FIRST_OF_SERVER
            self._tell(client, thing, 0, window)
            self._tell(client, window, 1, self.front)  # app_id
            self._tell(client, window, 4, struct.pack("=I", ACTIVATED))  # state
            self._tell(client, window, 5)  # done

    @staticmethod
    def _tell(client, thing, opcode, *arguments, files=()):
        body = b""
        for argument in arguments:
            if isinstance(argument, int):
                body += struct.pack("=I", argument)
            else:
                data = argument.encode() + b"\0" if isinstance(argument, str) else argument
                body += struct.pack("=I", len(data)) + data + bytes(-len(data) % 4)
        rights = [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", files))] if files else []
        client.sendmsg([struct.pack("=IHH", thing, opcode, 8 + len(body)) + body], rights)


def memory_file(data):
    file = os.fdopen(os.memfd_create("keymap"), "w+b")
    file.write(data)
    file.flush()
    return file
