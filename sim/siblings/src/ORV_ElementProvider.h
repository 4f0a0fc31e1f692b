#ifndef ORV_SIBLINGS_ORV_ElementProvider_h
#define ORV_SIBLINGS_ORV_ElementProvider_h

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <functional>

namespace orvsib
{

enum class ElementKind
{
    StorageSystem,
    NodeSystem,
    DiskExtent,
    FCPort,
    EthernetPort,
    StorageVolume
};

// Instance provider of one kind of managed element of the array. Elements
// are read from the management API on every request; nothing is kept.
// Read-only: create, modify and delete are refused.
class ORV_ElementProvider : public Pegasus::CIMInstanceProvider
{
public:
    explicit ORV_ElementProvider(ElementKind kind);
    ~ORV_ElementProvider() override;

    // Provider name, served class and kind of each registered element provider.
    static const char* providerName(ElementKind kind);
    static const char* className(ElementKind kind);

    void initialize(Pegasus::CIMOMHandle& cimom) override;
    void terminate() override;

    void getInstance(const Pegasus::OperationContext& context,
                     const Pegasus::CIMObjectPath& instanceReference,
                     const Pegasus::Boolean includeQualifiers,
                     const Pegasus::Boolean includeClassOrigin,
                     const Pegasus::CIMPropertyList& propertyList,
                     Pegasus::InstanceResponseHandler& handler) override;

    void enumerateInstances(const Pegasus::OperationContext& context,
                            const Pegasus::CIMObjectPath& classReference,
                            const Pegasus::Boolean includeQualifiers,
                            const Pegasus::Boolean includeClassOrigin,
                            const Pegasus::CIMPropertyList& propertyList,
                            Pegasus::InstanceResponseHandler& handler) override;

    void enumerateInstanceNames(const Pegasus::OperationContext& context,
                                const Pegasus::CIMObjectPath& classReference,
                                Pegasus::ObjectPathResponseHandler& handler) override;

    void modifyInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        const Pegasus::CIMInstance& instanceObject,
                        const Pegasus::Boolean includeQualifiers,
                        const Pegasus::CIMPropertyList& propertyList,
                        Pegasus::ResponseHandler& handler) override;

    void createInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        const Pegasus::CIMInstance& instanceObject,
                        Pegasus::ObjectPathResponseHandler& handler) override;

    void deleteInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        Pegasus::ResponseHandler& handler) override;

private:
    typedef std::function<Pegasus::CIMInstance(const Pegasus::CIMClass&)> _Builder;
    // Answers false to stop the walk.
    typedef std::function<bool(const Pegasus::CIMObjectPath&, const _Builder&)> _Visitor;

    // Walks every element of this kind: its path and how to build its instance.
    void _visit(const _Visitor& visitor) const;

    void _checkRequest(const Pegasus::OperationContext& context,
                       const Pegasus::CIMObjectPath& path) const;
    void _checkKeys(const Pegasus::CIMObjectPath& path) const;
    bool _keysMatch(const Pegasus::CIMObjectPath& requested,
                    const Pegasus::CIMObjectPath& candidate) const;
    Pegasus::CIMClass _classDefinition(Pegasus::Boolean includeQualifiers,
                                       Pegasus::Boolean includeClassOrigin,
                                       const Pegasus::CIMPropertyList& propertyList);
    Pegasus::String _text(const char* what) const;

    ElementKind _kind;
    Pegasus::CIMOMHandle _cimom;
};

} // namespace orvsib

#endif
