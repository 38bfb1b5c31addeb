using System.Collections.Immutable;
using System.Reflection.Metadata;

namespace PlatformMetadata;

/// <summary>
/// Converts the types in signatures to <see cref="WindowsType"/>. The context contains the arguments
/// of a generic type.
/// </summary>
internal sealed class TypeProvider(Library library) : ISignatureTypeProvider<WindowsType, ImmutableArray<WindowsType>>
{
    public WindowsType GetPrimitiveType(PrimitiveTypeCode code) => code switch
    {
        PrimitiveTypeCode.Void => WindowsType.Value("void", ""),
        PrimitiveTypeCode.Boolean => WindowsType.Value("boolean", "b1"),
        PrimitiveTypeCode.Byte => WindowsType.Value("BYTE", "u1"),
        PrimitiveTypeCode.Int16 => WindowsType.Value("INT16", "i2"),
        PrimitiveTypeCode.UInt16 => WindowsType.Value("UINT16", "u2"),
        PrimitiveTypeCode.Int32 => WindowsType.Value("INT32", "i4"),
        PrimitiveTypeCode.UInt32 => WindowsType.Value("UINT32", "u4"),
        PrimitiveTypeCode.Int64 => WindowsType.Value("INT64", "i8"),
        PrimitiveTypeCode.UInt64 => WindowsType.Value("UINT64", "u8"),
        PrimitiveTypeCode.Single => WindowsType.Value("FLOAT", "f4"),
        PrimitiveTypeCode.Double => WindowsType.Value("DOUBLE", "f8"),
        PrimitiveTypeCode.String => WindowsType.Value("HSTRING", "string"),
        PrimitiveTypeCode.Object => WindowsType.Interface("IInspectable", "cinterface(IInspectable)"),
        _ => throw new NotSupportedException($"primitive type {code}"),
    };

    public WindowsType GetTypeFromDefinition(MetadataReader reader, TypeDefinitionHandle handle, byte kind) =>
        library.Describe(new Definition(reader, handle));

    public WindowsType GetTypeFromReference(MetadataReader reader, TypeReferenceHandle handle, byte kind)
    {
        var reference = reader.GetTypeReference(handle);
        var full = $"{reader.GetString(reference.Namespace)}.{reader.GetString(reference.Name)}";
        return full switch
        {
            "System.Guid" => WindowsType.Value("GUID", "g16"),
            "System.Object" => GetPrimitiveType(PrimitiveTypeCode.Object),
            "Windows.Foundation.HResult" => WindowsType.Value("HRESULT", "struct(Windows.Foundation.HResult;i4)"),
            _ => library.Describe(library.ByFullName(full)),
        };
    }

    public WindowsType GetTypeFromSpecification(
        MetadataReader reader, ImmutableArray<WindowsType> arguments, TypeSpecificationHandle handle, byte kind) =>
        reader.GetTypeSpecification(handle).DecodeSignature(this, arguments);

    public WindowsType GetGenericInstantiation(WindowsType generic, ImmutableArray<WindowsType> arguments) =>
        Library.Instantiate(generic, arguments);

    public WindowsType GetGenericTypeParameter(ImmutableArray<WindowsType> arguments, int index) => arguments[index];

    public WindowsType GetSZArrayType(WindowsType element) => element with { Element = element };

    public WindowsType GetByReferenceType(WindowsType type) => type with { IsReference = true };

    public WindowsType GetModifiedType(WindowsType modifier, WindowsType type, bool isRequired) => type;

    public WindowsType GetPinnedType(WindowsType type) => type;

    public WindowsType GetGenericMethodParameter(ImmutableArray<WindowsType> arguments, int index) =>
        throw new NotSupportedException("generic method");

    public WindowsType GetArrayType(WindowsType element, ArrayShape shape) =>
        throw new NotSupportedException("array of more than one dimension");

    public WindowsType GetPointerType(WindowsType type) => throw new NotSupportedException("pointer");

    public WindowsType GetFunctionPointerType(MethodSignature<WindowsType> signature) =>
        throw new NotSupportedException("function pointer");
}
