"use strict";
// Bluetooth Low Energy devices whose names begin with "ORV": scan, connect, exchange bytes.
// Functions that may wait run on koffi's threads and return promises.
const { EventEmitter } = require("node:events");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const { setTimeout: pause } = require("node:timers/promises");
const { promisify } = require("node:util");
const koffi = require("koffi");
const { constants, functions } = require("./native.js");

const FILE = process.platform === "win32" ? "quelvixwinlib.dll" : "libquelvixwinlib.so";
const LIMIT = 2000; // ms after which the library stops waiting for a system operation
const SCAN_PAUSE = 50; // ms between two polls of a scanner's list
const READ_PAUSE = 5; // ms between two polls of a link

/** A failed call. `kind` is "rejected", "timeout", "error" or "in use"; `log` has the lines that the call logged. */
class OrvError extends Error {
    constructor(message, kind, log = "") {
        super(log ? `${message}\n${log}` : message);
        this.name = "OrvError";
        this.kind = kind;
        this.log = log;
    }
}

class ClosedError extends Error {
    constructor(what) {
        super(`the ${what} is closed`);
        this.name = "ClosedError";
        this.kind = "closed";
    }
}

function addressNumber(address) {
    if (typeof address !== "string" || !/^[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5}$/.test(address)) {
        throw new TypeError(`not an address such as A0:B1:C2:D3:E4:F5: ${address}`);
    }
    return Number.parseInt(address.replaceAll(":", ""), 16);
}

function addressText(number) {
    return Number(number).toString(16).toUpperCase().padStart(12, "0").match(/../g).join(":");
}

class Library {
    constructor({ flavour = "radio", file = process.env.QUELVIXWINLIB || undefined } = {}) {
        this.file = path.resolve(file ?? path.join(__dirname, "native", flavour, FILE));
        if (!fs.existsSync(this.file)) {
            throw new OrvError(`the ${flavour} library is not in this package: ${this.file}. Use the simulated ` +
                "one, or set QUELVIXWINLIB to the path of a library.", "error");
        }
        const native = koffi.load(this.file);
        for (const [name, [result, parameters]] of Object.entries(functions)) {
            try {
                this[name] = native.func(name, result, parameters);
            } catch (error) {
                if (!name.startsWith("OrvWorld_")) throw error; // only the simulated library has these functions
            }
        }
        this.linked = new Set();
        this.logging = false;
    }

    call(name, ...parameters) {
        return promisify(this[name].async)(...parameters);
    }

    /** Like `call`, but throws an error that states why `action` failed. */
    async check(action, name, ...parameters) {
        const start = this.now();
        const endOfLog = this.#logSize();
        const result = await this.call(name, ...parameters);
        if (result !== constants.ORV_FAILED) return result;
        const log = this.#logSince(endOfLog);
        if (log.includes("\tException: ")) throw new OrvError(`cannot ${action}: the system reported an error`, "error", log);
        if (this.now() - start >= LIMIT) throw new OrvError(`cannot ${action}: no answer within ${LIMIT} ms`, "timeout", log);
        throw new OrvError(`cannot ${action}: the device or the system rejected it`, "rejected", log);
    }

    /** Returns whether a Bluetooth radio is on. */
    async available() {
        return (await this.call("BluetoothAvailable")) !== constants.ORV_FAILED;
    }

    /** Returns the time in milliseconds on the clock that the timeouts use. */
    now() {
        return this.#timeIsSimulated() ? Number(this.OrvWorld_Now()) : performance.now();
    }

    /** Waits on the clock that `now` reads; simulated milliseconds take no real time. */
    async sleep(milliseconds) {
        if (this.#timeIsSimulated()) await this.call("OrvWorld_PassTime", Math.ceil(milliseconds));
        else await pause(milliseconds);
    }

    /** Empties and enables the log. Returns its path. */
    async enableLog() {
        await this.check("write the log", "Logging_Enable");
        this.logging = true;
        return `${this.file}.log`;
    }

    /** Disables the log and keeps its file. */
    disableLog() {
        this.logging = false;
        this.Logging_Disable();
    }

    /** Appends a line to the log if it is enabled. */
    log(text) {
        this.Logging_AppendLine(text, Buffer.byteLength(text));
    }

    async play(scenario, simulatedTime = true) {
        const folder = fs.mkdtempSync(path.join(os.tmpdir(), "quelvixwinlib-"));
        try {
            const file = path.join(folder, "scenario.json");
            const error = Buffer.alloc(400);
            fs.writeFileSync(file, JSON.stringify(scenario));
            if ((await this.call("OrvWorld_PlayScenario", file, simulatedTime ? 1 : 0, error, error.length)) < 0) {
                throw new TypeError(error.toString("utf8", 0, error.indexOf(0)));
            }
        } finally {
            fs.rmSync(folder, { recursive: true });
        }
    }

    #timeIsSimulated() {
        return this.OrvWorld_TimeIsSimulated?.() === 1;
    }

    #logSize() {
        return this.logging && fs.existsSync(`${this.file}.log`) ? fs.statSync(`${this.file}.log`).size : 0;
    }

    #logSince(offset) {
        if (!this.logging || !fs.existsSync(`${this.file}.log`)) return "";
        return fs.readFileSync(`${this.file}.log`).subarray(offset).toString();
    }
}

let loaded;

/** Returns the default library of scanners and streams: the library for a radio, loaded once. */
function library() {
    return (loaded ??= new Library());
}

/** A scanner session. Emits "device" when it finds a device, and "error" when it cannot poll. */
class Scanner extends EventEmitter {
    #library;
    #id;
    #closed = false;
    #watching;

    constructor(native = library()) {
        super();
        this.#library = native;
    }

    /** Empties the device list, then scans and emits events until `stop` or `close` is called. */
    async start() {
        if (this.#closed) throw new ClosedError("scanner");
        this.#id ??= await this.#library.check("create a scanner", "OrvScanner_Initialize");
        await this.#library.check("start the scan", "OrvScanner_Start", this.#id);
        this.#watching = { seen: new Set() };
        if (this.listenerCount("device") > 0) this.#watch(this.#watching).catch((error) => this.emit("error", error));
    }

    /** Ends the scan and keeps the list. */
    async stop() {
        this.#watching = undefined;
        await this.#library.check("stop the scan", "OrvScanner_Stop", this.#session());
    }

    /** Returns all devices found since `start`, in the order of their discovery. */
    devices() {
        const result = [];
        const record = {};
        while (this.#library.OrvScanner_GetDeviceInfo(this.#session(), result.length, record) === 0) {
            const name = Buffer.from(record.name);
            result.push({
                address: addressText(record.address),
                name: name.toString("utf8", 0, name.indexOf(0)),
                rssi: record.rssi,
                value0500: record.value0500,
                value1130: record.value1130,
                data1118: Buffer.from(record.data1118),
            });
        }
        return result;
    }

    /** Stops the scan and removes the session. */
    async close() {
        if (this.#closed) return;
        this.#closed = true;
        this.#watching = undefined;
        if (this.#id === undefined) return;
        await this.#library.call("OrvScanner_Stop", this.#id);
        await this.#library.call("OrvScanner_Deinitialize", this.#id);
    }

    #session() {
        if (this.#closed || this.#id === undefined) throw new ClosedError("scanner");
        return this.#id;
    }

    async #watch(watching) {
        while (this.#watching === watching) {
            for (const device of this.devices()) {
                if (!watching.seen.has(device.address)) {
                    watching.seen.add(device.address);
                    this.emit("device", device);
                }
            }
            await this.#library.sleep(SCAN_PAUSE);
        }
    }
}

async function scan(milliseconds = 2000, native = library()) {
    const scanner = new Scanner(native);
    try {
        await scanner.start();
        await native.sleep(milliseconds);
        return scanner.devices();
    } finally {
        await scanner.close();
    }
}

/** The link to a device. Emits "close" and "error", and "data" while that event has listeners. */
class DeviceStream extends EventEmitter {
    #library;
    #number;
    #open = true;
    #reading = false;

    constructor(native, number) {
        super();
        this.#library = native;
        this.#number = number;
        this.address = addressText(number);
        /** The time that `read` waits for a byte, in milliseconds or Infinity. */
        this.timeout = 5000;
        this.on("newListener", (event) => {
            if (event === "data" && !this.#reading) setImmediate(() => this.#emitData());
        });
    }

    /** Sends `data` in one write. Returns its length. */
    async write(data) {
        const block = Buffer.from(data);
        return this.#library.check(`send to ${this.address}`, "OrvDevice_Send", this.#link(), block.length, block);
    }

    /** Waits for the first byte, then returns the bytes that have arrived. Does not wait if `timeout` is 0. */
    async read(size = 65536, timeout = this.timeout) {
        if (!Number.isInteger(size) || size < 1) throw new RangeError(`size must be at least 1: ${size}`);
        const buffer = Buffer.alloc(size);
        const end = this.#library.now() + timeout;
        for (;;) {
            const count = await this.#library.check(
                `receive from ${this.address}`, "OrvDevice_Receive", this.#link(), size, buffer);
            if (count > 0 || timeout === 0) return buffer.subarray(0, count);
            if (this.#library.now() >= end) {
                throw new OrvError(`nothing received from ${this.address} within ${timeout} ms`, "timeout");
            }
            await this.#library.sleep(READ_PAUSE);
        }
    }

    /** Discards all unread bytes. Returns their number. */
    async flush() {
        return this.#library.check(`flush ${this.address}`, "OrvDevice_Flush", this.#link());
    }

    /** Closes the link. If this fails, the stream stays open, and `close` can be called again. */
    async close() {
        if (!this.#open) return;
        this.#open = false;
        try {
            await this.#library.check(`disconnect from ${this.address}`, "OrvDevice_Disconnect", this.#number);
        } catch (error) {
            this.#open = true;
            throw error;
        }
        this.#library.linked.delete(this.#number);
        this.emit("close");
    }

    #link() {
        if (!this.#open) throw new ClosedError("stream");
        return this.#number;
    }

    async #emitData() {
        this.#reading = true;
        try {
            while (this.#open && this.listenerCount("data") > 0) {
                const data = await this.read(65536, 0);
                if (data.length > 0) this.emit("data", data);
                else await this.#library.sleep(READ_PAUSE);
            }
        } catch (error) {
            if (this.#open) this.emit("error", error);
        } finally {
            this.#reading = false;
        }
    }
}

/** Connects to a device, whether or not a scan has found it. */
async function connect(address, native = library()) {
    const number = addressNumber(address);
    // Rejects a second link: two links would share one queue of received bytes.
    if (native.linked.has(number)) throw new OrvError(`cannot connect to ${address}: this process is already connected to it`, "in use");
    native.linked.add(number);
    try {
        await native.check(`connect to ${address}`, "OrvDevice_Connect", number);
    } catch (error) {
        native.linked.delete(number);
        throw error;
    }
    return new DeviceStream(native, number);
}

module.exports = { ClosedError, DeviceStream, Library, OrvError, Scanner, connect, library, scan };
