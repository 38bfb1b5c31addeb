/// <reference types="node" />
import { EventEmitter } from "node:events";

export type Kind = "rejected" | "timeout" | "error" | "in use";

/** The error of a failed library call. */
export class OrvError extends Error {
    /** While the log is off, `log` is empty, and system errors are of the kind "rejected". */
    readonly kind: Kind;
    readonly log: string;
}

/** The error of a call to a closed scanner or stream. */
export class ClosedError extends Error {
    readonly kind: "closed";
}

/** One device and its latest values; the C header describes them. */
export interface Device {
    address: string;
    name: string;
    rssi: number;
    value0500: number;
    value1130: number;
    data1118: Buffer;
}

/** The native library for a radio, or for a simulated world. */
export class Library {
    constructor(options?: { flavour?: "radio" | "simulated"; file?: string });
    readonly file: string;
    available(): Promise<boolean>;
    now(): number;
    sleep(milliseconds: number): Promise<void>;
    enableLog(): Promise<string>;
    disableLog(): void;
    log(text: string): void;
    /** Creates the world of a scenario. Simulated library only. */
    play(scenario: object, simulatedTime?: boolean): Promise<void>;
    /** Calls any function of the C headers on another thread and returns its result. */
    call(name: string, ...parameters: unknown[]): Promise<number>;
}

export class Scanner extends EventEmitter {
    constructor(library?: Library);
    start(): Promise<void>;
    stop(): Promise<void>;
    devices(): Device[];
    close(): Promise<void>;
    on(event: "device", listener: (device: Device) => void): this;
    on(event: "error", listener: (error: Error) => void): this;
}

export class DeviceStream extends EventEmitter {
    readonly address: string;
    timeout: number;
    write(data: Uint8Array | string): Promise<number>;
    read(size?: number, timeout?: number): Promise<Buffer>;
    flush(): Promise<number>;
    close(): Promise<void>;
    on(event: "data", listener: (data: Buffer) => void): this;
    on(event: "close", listener: () => void): this;
    on(event: "error", listener: (error: Error) => void): this;
}

export function library(): Library;
export function scan(milliseconds?: number, library?: Library): Promise<Device[]>;
export function connect(address: string, library?: Library): Promise<DeviceStream>;
