// Tells the device helper which window is in front: a Wayland compositor tells only its own scripts.
// KWin 5.27 has clients, KWin 6 calls the same things windows.

const activated = workspace.windowActivated || workspace.clientActivated;
const added = workspace.windowAdded || workspace.clientAdded;
const all = workspace.windowList || workspace.clientList;
const helperName = /^com\.halcyra\.drevix\.Process\.DrevixHelper\.p[0-9]+$/;
const longestChain = 8; // of dialogs of dialogs
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
function tellAll() {
    callDBus("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames", tell);
}

// A dialog is known by the window that it is a dialog of.
function frontChanged(window) {
    for (let i = 0; i < longestChain && window && window.transientFor; ++i) {
        window = window.transientFor;
    }
    front = window;
    tellAll();
}

// A window may become another application's.
function watch(window) {
    const changed = () => window === front && tellAll();
    window.windowClassChanged.connect(changed);
    window.desktopFileNameChanged.connect(changed);
}

all.call(workspace).forEach(watch);
added.connect(watch);
activated.connect(frontChanged);
frontChanged(workspace.activeWindow || workspace.activeClient);
