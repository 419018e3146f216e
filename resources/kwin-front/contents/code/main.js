// Tells the device helper which window is in front: a Wayland compositor tells only its own scripts.
// KWin 5.27 has clients, KWin 6 calls the same things windows.

const activated = workspace.windowActivated || workspace.clientActivated;
const helperName = /^com\.halcyra\.drevix\.Process\.DrevixHelper\.p[0-9]+$/;
let front = null;

function tell(names) {
    const text = value => (value === undefined || value === null ? "" : String(value));
    const window = front || {};
    for (const name of names.filter(name => helperName.test(name))) {
        callDBus(name, "/com/halcyra/drevix/Device", "com.halcyra.drevix.Device1", "SetFront",
                 text(window.desktopFileName), text(window.resourceClass), text(window.resourceName), window.pid || 0);
    }
}

// The helper is looked up each time, since it may have been started anew.
function frontChanged(window) {
    front = window;
    callDBus("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames", tell);
}

activated.connect(frontChanged);
frontChanged(workspace.activeWindow || workspace.activeClient);
