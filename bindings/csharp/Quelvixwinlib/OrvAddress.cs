using System;
using System.Globalization;

namespace Quelvixwinlib;

/// <summary>Converts Bluetooth addresses between text, such as A0:B1:C2:D3:E4:F5, and the library's numbers.</summary>
public static class OrvAddress
{
    /// <summary>Returns the number for an address in text form.</summary>
    /// <exception cref="ArgumentException">The text is not an address.</exception>
    public static ulong Parse(string address)
    {
        var parts = (address ?? throw new ArgumentNullException(nameof(address))).Split(':');
        ulong result = 0;
        foreach (var part in parts)
        {
            if (parts.Length != 6 || part.Length != 2 ||
                !byte.TryParse(part, NumberStyles.AllowHexSpecifier, CultureInfo.InvariantCulture, out var value))
            {
                throw new ArgumentException($"not an address such as A0:B1:C2:D3:E4:F5: \"{address}\"", nameof(address));
            }
            result = result << 8 | value;
        }
        return result;
    }

    /// <summary>Returns the text form of an address.</summary>
    public static string Format(ulong address)
    {
        var digits = address.ToString("X12", CultureInfo.InvariantCulture);
        for (var at = 10; at > 0; at -= 2)
        {
            digits = digits.Insert(at, ":");
        }
        return digits;
    }
}
