using System;
using System.IO;

namespace Quelvixwinlib;

/// <summary>The reason why a library call failed.</summary>
public enum OrvFailure
{
    /// <summary>The device or the system rejected the call. System errors are also rejections while the
    /// log is off, because only the log shows them.</summary>
    Rejected,

    /// <summary>The device or the system did not answer in time.</summary>
    Timeout,

    /// <summary>The log shows that the system reported an error.</summary>
    Error,

    /// <summary>This process already has a link to the device.</summary>
    InUse,
}

/// <summary>The exception for a failed library call.</summary>
public sealed class OrvException : IOException
{
    internal OrvException(string message, OrvFailure failure, string log = "")
        : base(log.Length == 0 ? message : message + Environment.NewLine + log)
    {
        Failure = failure;
        Log = log;
    }

    /// <summary>The reason why the call failed.</summary>
    public OrvFailure Failure { get; }

    /// <summary>The lines that the call added to the log; empty while the log is off.</summary>
    public string Log { get; }
}
