#ifndef ORV_AssociationFrame_h
#define ORV_AssociationFrame_h

// The machinery that the association providers of the module share: which
// role and class filters can match, the flow of the four association
// operations and of the three instance operations, and their trace lines.
// A provider describes its association as data (ORV_AssociationShape) and
// hands the frame its own private operations (ORV_AssociationHooks); the
// frame never knows how a provider finds the other end.

#include <functional>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMOMHandle.h>

PEGASUS_USING_PEGASUS;

// One end of an association.
struct ORV_AssociationEnd
{
    // The reference property (and key) that names this end.
    String role;
    // Classes whose paths count as this end when a client starts from them.
    Array<CIMName> classes;
    // Further names under which a client may ask for this end as a result
    // class (its superclasses); asked from this end itself they match nothing.
    Array<CIMName> superClasses;
};

// Which end of the association a path names.
enum ORV_AssociationSide
{
    ORV_ASSOC_NO_SIDE,
    ORV_ASSOC_LEFT,
    ORV_ASSOC_RIGHT
};

// What one association provider serves: everything the filter rules need.
class ORV_AssociationShape
{
public:
    ORV_AssociationShape(const CIMName& assocClass, const ORV_AssociationEnd& left,
                         const ORV_AssociationEnd& right, const Array<CIMName>& referenceClasses);

    const CIMName& assocClass() const
    {
        return _assocClass;
    }
    const ORV_AssociationEnd& left() const
    {
        return _left;
    }
    const ORV_AssociationEnd& right() const
    {
        return _right;
    }

    // True when a request with these filters can have no answer, so that the
    // provider answers it with an empty result instead of an error. operation
    // is the request's name ("associators", "associatorNames", "references",
    // "referenceNames"); resultClass is the result-class filter of
    // associators and the association-class filter of references. Only the
    // filters are judged, never whether the object is one of the two ends.
    Boolean invalidParms(const CIMObjectPath& objectName, const String& role,
                         const String& resultRole, const CIMName& resultClass,
                         const String& operation) const;

    // The end that a path of this class names; the right end is tried first.
    ORV_AssociationSide sideOf(const CIMName& className) const;

    // The association's path and instance for a pair, left end first, with
    // host put on both references and the path, in the module's namespace.
    CIMObjectPath buildName(const CIMObjectPath& leftPath, const CIMObjectPath& rightPath,
                            const String& host) const;
    CIMInstance buildInstance(CIMOMHandle& cimom, const CIMObjectPath& leftPath,
                              const CIMObjectPath& rightPath, const String& host,
                              Boolean includeQualifiers, Boolean includeClassOrigin,
                              const CIMPropertyList& propertyList) const;

private:
    CIMName _assocClass;
    ORV_AssociationEnd _left;
    ORV_AssociationEnd _right;
    Array<CIMName> _referenceClasses;
    Array<CIMName> _associatorClasses;
};

// A provider's own private operations, called by the frame.
struct ORV_AssociationHooks
{
    std::function<Boolean(const CIMObjectPath& objectName, const String& role,
                          const String& resultRole, const CIMName& resultClass,
                          const String& operation)>
        invalidParms;
    std::function<Array<CIMInstance>(
        const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList)>
        relatedInstances;
    std::function<Array<CIMObjectPath>(const CIMObjectPath& objectName,
                                       const OperationContext& context)>
        relatedInstanceNames;
    std::function<Array<CIMInstance>(Boolean includeQualifiers, Boolean includeClassOrigin,
                                     const CIMPropertyList& propertyList)>
        instances;
    std::function<Array<CIMObjectPath>()> instanceNames;
    std::function<CIMInstance(const CIMObjectPath& leftPath, const CIMObjectPath& rightPath,
                              Boolean includeQualifiers, Boolean includeClassOrigin,
                              const CIMPropertyList& propertyList)>
        buildAssociationInstance;
    std::function<CIMObjectPath(const CIMObjectPath& leftPath, const CIMObjectPath& rightPath)>
        buildAssociationName;
    // Optional: which end a path names. Unset, the path's class decides
    // (ORV_AssociationShape::sideOf); a provider that knows its ends by
    // their paths sets it.
    std::function<ORV_AssociationSide(const CIMObjectPath& objectName)> sideOf;

    // Binds the hooks to a provider's private helpers; called from inside
    // the provider, which alone may name them.
    template <class P>
    static ORV_AssociationHooks
    bind(P* provider,
         Boolean (P::*invalidParmsOp)(const CIMObjectPath&, String, String, CIMName, String),
         Array<CIMInstance> (P::*relatedOp)(const CIMObjectPath&, const OperationContext&, Boolean,
                                            Boolean, const CIMPropertyList&),
         Array<CIMObjectPath> (P::*relatedNamesOp)(const CIMObjectPath&, const OperationContext&),
         Array<CIMInstance> (P::*instancesOp)(Boolean, Boolean, const CIMPropertyList&),
         Array<CIMObjectPath> (P::*instanceNamesOp)(),
         CIMInstance (P::*buildInstanceOp)(const CIMObjectPath&, const CIMObjectPath&, Boolean,
                                           Boolean, const CIMPropertyList&),
         CIMObjectPath (P::*buildNameOp)(const CIMObjectPath&, const CIMObjectPath&))
    {
        using namespace std::placeholders;
        ORV_AssociationHooks hooks;
        hooks.invalidParms = std::bind(invalidParmsOp, provider, _1, _2, _3, _4, _5);
        hooks.relatedInstances = std::bind(relatedOp, provider, _1, _2, _3, _4, _5);
        hooks.relatedInstanceNames = std::bind(relatedNamesOp, provider, _1, _2);
        hooks.instances = std::bind(instancesOp, provider, _1, _2, _3);
        hooks.instanceNames = std::bind(instanceNamesOp, provider);
        hooks.buildAssociationInstance = std::bind(buildInstanceOp, provider, _1, _2, _3, _4, _5);
        hooks.buildAssociationName = std::bind(buildNameOp, provider, _1, _2);
        return hooks;
    }
};

// The request flow shared by the association providers. providerName is the
// provider's class name: it begins the trace lines and exception texts.
class ORV_AssociationFrame
{
public:
    // sourceFile and sourceLine name the provider's own source, which a
    // refused caller's exception carries for the server's trace.
    ORV_AssociationFrame(const String& providerName, const ORV_AssociationShape& shape,
                         const ORV_AssociationHooks& hooks, const char* sourceFile,
                         Uint32 sourceLine);

    // Lifecycle: logs the entry line, lets the provider set its members,
    // reads the system's host and name, lets the provider keep what it
    // derives from them (afterIdentity, optional: paths fixed for the
    // provider's life), opens the management API for the server (a failure
    // is logged under openFailureName and initialisation goes on) and logs
    // the exit line.
    static void initialize(const String& providerName, const String& openFailureName,
                           CIMOMHandle& cimom, String& hostAddr, String& systemName,
                           const std::function<void()>& setMembers,
                           const std::function<void()>& afterIdentity = std::function<void()>());

    void associators(const OperationContext& context, const CIMObjectPath& objectName,
                     const CIMName& associationClass, const CIMName& resultClass,
                     const String& role, const String& resultRole, Boolean includeQualifiers,
                     Boolean includeClassOrigin, const CIMPropertyList& propertyList,
                     ObjectResponseHandler& handler) const;

    void associatorNames(const OperationContext& context, const CIMObjectPath& objectName,
                         const CIMName& associationClass, const CIMName& resultClass,
                         const String& role, const String& resultRole,
                         ObjectPathResponseHandler& handler) const;

    void references(const OperationContext& context, const CIMObjectPath& objectName,
                    const CIMName& resultClass, const String& role, Boolean includeQualifiers,
                    Boolean includeClassOrigin, const CIMPropertyList& propertyList,
                    ObjectResponseHandler& handler) const;

    void referenceNames(const OperationContext& context, const CIMObjectPath& objectName,
                        const CIMName& resultClass, const String& role,
                        ObjectPathResponseHandler& handler) const;

    void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
                     Boolean includeQualifiers, Boolean includeClassOrigin,
                     const CIMPropertyList& propertyList, InstanceResponseHandler& handler) const;

    void enumerateInstances(const OperationContext& context, Boolean includeQualifiers,
                            Boolean includeClassOrigin, const CIMPropertyList& propertyList,
                            InstanceResponseHandler& handler) const;

    void enumerateInstanceNames(const OperationContext& context,
                                ObjectPathResponseHandler& handler) const;

    // The usual _getRelatedInstanceNames: the paths of the related instances
    // built without qualifiers, class origins or property filter.
    Array<CIMObjectPath> relatedInstanceNames(const CIMObjectPath& objectName,
                                              const OperationContext& context) const;

    // The usual _getInstanceNames: the paths of every association instance.
    Array<CIMObjectPath> instanceNames() const;

    // Runs fill, which appends to result. Whatever it throws is logged with
    // the number of instances assembled so far and thrown again, so that a
    // partial result never reaches a client; operation names the helper in
    // the trace ("_getInstances", "_getRelatedInstances").
    static void collect(const String& providerName, const char* operation,
                        Array<CIMInstance>& result, const std::function<void()>& fill);

    // The opening trace line of _getRelatedInstances.
    static void logRelatedEntry(const String& providerName, const CIMObjectPath& objectName);

    static Array<CIMObjectPath> pathsOf(const Array<CIMInstance>& instances);

private:
    ORV_AssociationSide _sideOf(const CIMObjectPath& objectName) const;
    void _authorize(const OperationContext& context) const;

    String _providerName;
    const char* _sourceFile;
    Uint32 _sourceLine;
    ORV_AssociationShape _shape;
    ORV_AssociationHooks _hooks;
};

#endif
