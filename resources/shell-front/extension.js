// Tells the device helper which window is in front: a Wayland compositor tells only its own extensions.
/* exported init */

const {Gio, GLib, Shell} = imports.gi;

const PROCESSES = 'com.halcyra.drevix.Process';
const HELPER_NAME = /^com\.halcyra\.drevix\.Process\.DrevixHelper\.p[0-9]+$/;

class FrontReporter {
    enable() {
        this._helpers = new Set();
        this._focusId = global.display.connect('notify::focus-window', () => this._tell());
        // The helper is told as soon as it is there.
        this._ownerId = Gio.DBus.session.signal_subscribe('org.freedesktop.DBus', 'org.freedesktop.DBus', 'NameOwnerChanged',
            '/org/freedesktop/DBus', PROCESSES, Gio.DBusSignalFlags.MATCH_ARG0_NAMESPACE,
            (_bus, _sender, _path, _interface, _signal, parameters) => {
                const [name, , owner] = parameters.deepUnpack();
                this._know(name, owner !== '');
            });
        Gio.DBus.session.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', 'ListNames', null,
            new GLib.VariantType('(as)'), Gio.DBusCallFlags.NONE, -1, null, (bus, result) => {
                const [names] = bus.call_finish(result).deepUnpack();
                names.forEach(name => this._know(name, true));
            });
    }

    disable() {
        global.display.disconnect(this._focusId);
        Gio.DBus.session.signal_unsubscribe(this._ownerId);
        // The Shell stays on the bus: without this the last window would be in front for ever.
        this._helpers.forEach(name => this._send(name, ['', '', '', 0]));
        this._helpers.clear();
    }

    _know(name, isThere) {
        if (!HELPER_NAME.test(name))
            return;
        if (isThere) {
            this._helpers.add(name);
            this._send(name, this._front());
        } else {
            this._helpers.delete(name);
        }
    }

    _front() {
        const window = global.display.focus_window;
        if (!window)
            return ['', '', '', 0];
        const app = Shell.WindowTracker.get_default().get_window_app(window);
        const entry = app && !app.is_window_backed() ? app.get_id() : window.get_gtk_application_id();
        return [entry || '', window.get_wm_class() || '', window.get_wm_class_instance() || '', Math.max(window.get_pid(), 0)];
    }

    _tell() {
        const front = this._front();
        this._helpers.forEach(name => this._send(name, front));
    }

    _send(name, front) {
        Gio.DBus.session.call(name, '/com/halcyra/drevix/Device', 'com.halcyra.drevix.Device1', 'SetFront',
            new GLib.Variant('(sssu)', front), null, Gio.DBusCallFlags.NO_AUTO_START, -1, null, null);
    }
}

function init() {
    return new FrontReporter();
}
