// Saved states in the browser's own database: ten slots, and slot 0 for the machine as it was when the page was left.
export const SLOTS = 10;

function ask(request) {
  return new Promise((resolve, reject) => {
    request.onsuccess = () => resolve(request.result);
    request.onerror = () => reject(request.error);
  });
}

let database;
async function store(mode) {
  if (!database) {
    const opening = indexedDB.open('kiv', 1);
    opening.onupgradeneeded = () => opening.result.createObjectStore('states');
    database = await ask(opening);
  }
  return database.transaction('states', mode).objectStore('states');
}

// A state: { bytes, time, pixels (blue, green, red, 0), roms: null or [[socket, bytes], ...] }.
export async function putState(slot, state) { await ask((await store('readwrite')).put(state, slot)); }
export async function getState(slot) { return ask((await store('readonly')).get(slot)); }
export async function deleteState(slot) { await ask((await store('readwrite')).delete(slot)); }
