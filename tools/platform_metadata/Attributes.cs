using System.Collections.Immutable;
using System.Reflection.Metadata;

namespace PlatformMetadata;

/// <summary>Reads the attributes of a declaration by the names of their types.</summary>
internal static class Attributes
{
    private static readonly NamesOnly Provider = new();

    /// <summary>Returns the arguments of each attribute with this name.</summary>
    public static IEnumerable<ImmutableArray<object?>> Of(
        MetadataReader reader, CustomAttributeHandleCollection attributes, string name) =>
        from handle in attributes
        let attribute = reader.GetCustomAttribute(handle)
        where NameOf(reader, attribute) == name
        select attribute.DecodeValue(Provider).FixedArguments.Select(argument => argument.Value).ToImmutableArray();

    public static Guid? Identifier(MetadataReader reader, CustomAttributeHandleCollection attributes)
    {
        foreach (var a in Of(reader, attributes, "GuidAttribute"))
        {
            return new Guid((uint)a[0]!, (ushort)a[1]!, (ushort)a[2]!, (byte)a[3]!, (byte)a[4]!, (byte)a[5]!,
                (byte)a[6]!, (byte)a[7]!, (byte)a[8]!, (byte)a[9]!, (byte)a[10]!);
        }
        return null;
    }

    private static string NameOf(MetadataReader reader, CustomAttribute attribute)
    {
        if (attribute.Constructor.Kind != HandleKind.MemberReference)
        {
            return "";
        }
        var parent = reader.GetMemberReference((MemberReferenceHandle)attribute.Constructor).Parent;
        return reader.GetString(reader.GetTypeReference((TypeReferenceHandle)parent).Name);
    }

    private sealed class NamesOnly : ICustomAttributeTypeProvider<string>
    {
        public string GetPrimitiveType(PrimitiveTypeCode code) => code.ToString();

        public string GetSystemType() => "System.Type";

        public string GetSZArrayType(string element) => element + "[]";

        public string GetTypeFromDefinition(MetadataReader reader, TypeDefinitionHandle handle, byte kind) =>
            reader.GetString(reader.GetTypeDefinition(handle).Name);

        public string GetTypeFromReference(MetadataReader reader, TypeReferenceHandle handle, byte kind)
        {
            var type = reader.GetTypeReference(handle);
            return $"{reader.GetString(type.Namespace)}.{reader.GetString(type.Name)}";
        }

        public string GetTypeFromSerializedName(string name) => name;

        public PrimitiveTypeCode GetUnderlyingEnumType(string type) => PrimitiveTypeCode.Int32;

        public bool IsSystemType(string type) => type == "System.Type";
    }
}
