// Tells the device helper which window is in front: a Wayland compositor tells only its own extensions.
/* exported init */

const {Gio, GLib, Shell} = imports.gi;

const PROCESSES = 'com.halcyra.drevix.Process';
const HELPER_NAME = /^com\.halcyra\.drevix\.Process\.DrevixHelper\.p[0-9]+$/;
const LONGEST_CHAIN = 8; // of dialogs of dialogs

class FrontReporter {
    enable() {
        this._helpers = new Set();
        this._told = '';
        this._window = null;
        this._tracker = Shell.WindowTracker.get_default();
        this._focusId = global.display.connect('notify::focus-window', () => this._tell());
        // Which application a window belongs to may be known only after it has come to the front.
        this._trackerId = this._tracker.connect('tracked-windows-changed', () => this._tell());
        // The helper is told as soon as it is there.
        this._ownerId = Gio.DBus.session.signal_subscribe('org.freedesktop.DBus', 'org.freedesktop.DBus', 'NameOwnerChanged',
            '/org/freedesktop/DBus', PROCESSES, Gio.DBusSignalFlags.MATCH_ARG0_NAMESPACE,
            (_bus, _sender, _path, _interface, _signal, parameters) => {
                const [name, , owner] = parameters.deepUnpack();
                this._know(name, owner !== '');
            });
        const listing = new Gio.Cancellable();
        this._listing = listing;
        Gio.DBus.session.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', 'ListNames', null,
            new GLib.VariantType('(as)'), Gio.DBusCallFlags.NONE, -1, listing, (bus, result) => {
                // An answer may be under way when the extension is switched off.
                if (listing.is_cancelled())
                    return;
                const [names] = bus.call_finish(result).deepUnpack();
                names.forEach(name => this._know(name, true));
            });
        this._tell();
    }

    disable() {
        this._listing.cancel();
        global.display.disconnect(this._focusId);
        this._tracker.disconnect(this._trackerId);
        this._watch(null);
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

    // A window may become another application's.
    _watch(window) {
        if (window === this._window)
            return;
        this._windowIds?.forEach(id => this._window.disconnect(id));
        this._window = window;
        this._windowIds = window
            ? ['wm-class', 'gtk-application-id'].map(name => window.connect(`notify::${name}`, () => this._tell()))
            : [];
    }

    _front() {
        let window = global.display.focus_window;
        for (let i = 0; i < LONGEST_CHAIN && window?.get_transient_for(); ++i)
            window = window.get_transient_for();
        this._watch(window);
        if (!window)
            return ['', '', '', 0];
        const app = this._tracker.get_window_app(window);
        const entry = app && !app.is_window_backed() ? app.get_id() : window.get_gtk_application_id();
        return [entry || '', window.get_wm_class() || '', window.get_wm_class_instance() || '', Math.max(window.get_pid(), 0)];
    }

    _tell() {
        const front = this._front();
        const told = JSON.stringify(front);
        if (told === this._told)
            return;
        this._told = told;
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
