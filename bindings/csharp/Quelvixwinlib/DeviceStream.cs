using System;
using System.Collections.Generic;
using System.IO;
using System.Threading;
using System.Threading.Tasks;
using Quelvixwinlib.Native;

namespace Quelvixwinlib;

/// <summary>The link to a device, as a stream of bytes. Each write sends one block. A read waits for the first
/// byte and returns the bytes that have arrived.</summary>
public sealed class DeviceStream : Stream
{
    private const int Pause = 5; // ms between two polls of the link
    private static readonly HashSet<ulong> Linked = new();
    private readonly ulong address;
    private bool open = true;

    private DeviceStream(ulong address) => this.address = address;

    /// <summary>The address of the device.</summary>
    public string Address => OrvAddress.Format(address);

    /// <summary>The time that a read waits for a byte, in milliseconds or Timeout.Infinite. If the device goes out of
    /// range, no bytes arrive; the library does not report the reason.</summary>
    public override int ReadTimeout { get; set; } = 5000;

    /// <summary>Connects to a device, whether or not a scan has found it.</summary>
    public static DeviceStream Connect(string address)
    {
        var number = OrvAddress.Parse(address);
        lock (Linked)
        {
            // Rejects a second link: two links would share one queue of received bytes.
            if (!Linked.Add(number))
            {
                throw new OrvException($"cannot connect to {address}: this process is already connected to it", OrvFailure.InUse);
            }
        }
        try
        {
            OrvLibrary.Check("connect to " + address, () => Functions.OrvDevice_Connect(number));
            return new DeviceStream(number);
        }
        catch
        {
            Forget(number);
            throw;
        }
    }

    /// <summary>Connects to a device on another thread.</summary>
    public static Task<DeviceStream> ConnectAsync(string address, CancellationToken cancellation = default) =>
        OrvLibrary.OnOwnThread(() => Connect(address), cancellation);

    /// <inheritdoc/>
    /// <exception cref="OrvException">No byte arrived within ReadTimeout.</exception>
    public override int Read(byte[] buffer, int offset, int count) =>
        Read(buffer, offset, count, CancellationToken.None);

    /// <summary>Reads on another thread. A cancelled read removes no bytes.</summary>
    public override Task<int> ReadAsync(byte[] buffer, int offset, int count, CancellationToken cancellationToken)
    {
        CheckRange(buffer, offset, count);
        return OrvLibrary.OnOwnThread(() => Read(buffer, offset, count, cancellationToken), cancellationToken);
    }

    /// <summary>Sends the bytes in one write.</summary>
    public override unsafe void Write(byte[] buffer, int offset, int count)
    {
        CheckRange(buffer, offset, count);
        OrvLibrary.Check("send to " + Address, () =>
        {
            fixed (byte* start = buffer)
            {
                return Functions.OrvDevice_Send(Link, count, start + offset);
            }
        });
    }

    /// <summary>Sends one block on another thread.</summary>
    public override Task WriteAsync(byte[] buffer, int offset, int count, CancellationToken cancellationToken)
    {
        CheckRange(buffer, offset, count);
        return OrvLibrary.OnOwnThread(() => { Write(buffer, offset, count); return 0; }, cancellationToken);
    }

    /// <summary>Discards all unread bytes. Returns their number.</summary>
    public int DiscardReceived() => OrvLibrary.Check("flush " + Address, () => Functions.OrvDevice_Flush(Link));

    /// <summary>Does nothing, because a write is finished when Write returns.</summary>
    public override void Flush() => _ = Link;

    /// <summary>Closes the link. Unlike Dispose, it reports errors; after an error, the stream stays open and can be
    /// closed again.</summary>
    public void Disconnect()
    {
        lock (Linked)
        {
            if (!open)
            {
                return;
            }
            open = false;
        }
        try
        {
            OrvLibrary.Check("disconnect from " + Address, () => Functions.OrvDevice_Disconnect(address));
        }
        catch
        {
            open = true;
            throw;
        }
        Forget(address);
    }

    /// <inheritdoc/>
    public override bool CanRead => open;

    /// <inheritdoc/>
    public override bool CanWrite => open;

    /// <inheritdoc/>
    public override bool CanTimeout => true;

    /// <inheritdoc/>
    public override bool CanSeek => false;

    /// <inheritdoc/>
    public override long Length => throw new NotSupportedException();

    /// <inheritdoc/>
    public override long Position
    {
        get => throw new NotSupportedException();
        set => throw new NotSupportedException();
    }

    /// <inheritdoc/>
    public override long Seek(long offset, SeekOrigin origin) => throw new NotSupportedException();

    /// <inheritdoc/>
    public override void SetLength(long value) => throw new NotSupportedException();

    /// <summary>Closes the link. Does not report errors, because Dispose must not throw.</summary>
    protected override void Dispose(bool disposing)
    {
        if (disposing)
        {
            try
            {
                Disconnect();
            }
            catch (OrvException)
            {
                // Ignores the error, because Dispose must not throw.
            }
        }
        base.Dispose(disposing);
    }

    private ulong Link => open ? address : throw new ObjectDisposedException(nameof(DeviceStream));

    private static void Forget(ulong address)
    {
        lock (Linked)
        {
            Linked.Remove(address);
        }
    }

    private static void CheckRange(byte[] buffer, int offset, int count)
    {
        if (buffer is null)
        {
            throw new ArgumentNullException(nameof(buffer));
        }
        if (offset < 0 || count < 0 || offset > buffer.Length - count)
        {
            throw new ArgumentOutOfRangeException(nameof(count), "the range is not within the buffer");
        }
    }

    private unsafe int Read(byte[] buffer, int offset, int count, CancellationToken cancellation)
    {
        CheckRange(buffer, offset, count);
        var start = OrvLibrary.Now;
        while (true)
        {
            cancellation.ThrowIfCancellationRequested();
            var received = OrvLibrary.Check("receive from " + Address, () =>
            {
                fixed (byte* first = buffer)
                {
                    return Functions.OrvDevice_Receive(Link, count, first + offset);
                }
            });
            if (received > 0 || count == 0)
            {
                return received;
            }
            if (ReadTimeout != Timeout.Infinite && OrvLibrary.Now - start >= ReadTimeout)
            {
                throw new OrvException($"nothing received from {Address} within {ReadTimeout} ms", OrvFailure.Timeout);
            }
            OrvLibrary.Sleep(Pause);
        }
    }
}
