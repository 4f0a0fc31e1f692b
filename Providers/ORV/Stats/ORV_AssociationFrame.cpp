#include "ORV_AssociationFrame.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

namespace
{

// Logging takes C strings; these keep the converted text alive for the call.
struct Text
{
    explicit Text(const String& s) : c(s.getCString()) {}
    explicit Text(const CIMName& n) : c(n.getString().getCString()) {}
    explicit Text(const CIMObjectPath& p) : c(p.toString().getCString()) {}
    operator const char*() const
    {
        return c;
    }
    CString c;
};

Boolean sameText(const String& a, const char* b)
{
    return String::equalNoCase(a, String(b));
}

} // namespace

// ---- shape -----------------------------------------------------------------

ORV_AssociationShape::ORV_AssociationShape(const CIMName& assocClass,
                                           const ORV_AssociationEnd& left,
                                           const ORV_AssociationEnd& right,
                                           const Array<CIMName>& referenceClasses)
    : _assocClass(assocClass), _left(left), _right(right), _referenceClasses(referenceClasses)
{
    // A result class must name one of the two ends, by class or superclass.
    _associatorClasses.appendArray(left.classes);
    _associatorClasses.appendArray(left.superClasses);
    _associatorClasses.appendArray(right.classes);
    _associatorClasses.appendArray(right.superClasses);
}

Boolean ORV_AssociationShape::invalidParms(const CIMObjectPath& objectName, const String& role,
                                           const String& resultRole, const CIMName& resultClass,
                                           const String& operation) const
{
    const CIMName objectClass = objectName.getClassName();
    const Boolean isLeft = ORV_Common::isPartOfArray(objectClass, _left.classes);
    const Boolean isRight = ORV_Common::isPartOfArray(objectClass, _right.classes);

    if (role.size() != 0)
    {
        const Boolean leftRole = String::equalNoCase(role, _left.role);
        const Boolean rightRole = String::equalNoCase(role, _right.role);
        if ((!leftRole && !rightRole) || (isLeft && !leftRole) || (isRight && !rightRole))
        {
            return true;
        }
    }

    if (resultRole.size() != 0)
    {
        const Boolean leftRole = String::equalNoCase(resultRole, _left.role);
        const Boolean rightRole = String::equalNoCase(resultRole, _right.role);
        if ((!leftRole && !rightRole) || (isLeft && !rightRole) || (isRight && !leftRole))
        {
            return true;
        }
    }

    if (sameText(operation, "references") || sameText(operation, "referenceNames"))
    {
        return !resultClass.isNull() && !ORV_Common::isPartOfArray(resultClass, _referenceClasses);
    }

    if ((sameText(operation, "associators") || sameText(operation, "associatorNames")) &&
        !resultClass.isNull())
    {
        if (!ORV_Common::isPartOfArray(resultClass, _associatorClasses))
        {
            return true;
        }
        // Asking an end for its own class or one of its own end's
        // superclasses finds nothing. Another class of the same end (a
        // sibling) is not refused here: the answer is left to the server.
        if (resultClass.equal(objectClass))
        {
            return true;
        }
        if (isLeft && ORV_Common::isPartOfArray(resultClass, _left.superClasses))
        {
            return true;
        }
        if (isRight && ORV_Common::isPartOfArray(resultClass, _right.superClasses))
        {
            return true;
        }
    }
    return false;
}

ORV_AssociationSide ORV_AssociationShape::sideOf(const CIMName& className) const
{
    if (ORV_Common::isPartOfArray(className, _right.classes))
    {
        return ORV_ASSOC_RIGHT;
    }
    if (ORV_Common::isPartOfArray(className, _left.classes))
    {
        return ORV_ASSOC_LEFT;
    }
    return ORV_ASSOC_NO_SIDE;
}

CIMObjectPath ORV_AssociationShape::buildName(const CIMObjectPath& leftPath,
                                              const CIMObjectPath& rightPath,
                                              const String& host) const
{
    return ORV_Common::buildAssocPath(_assocClass, _left.role, _right.role, leftPath, rightPath,
                                      host, ORV_Common::NAMESPACE.getString());
}

CIMInstance ORV_AssociationShape::buildInstance(CIMOMHandle& cimom, const CIMObjectPath& leftPath,
                                                const CIMObjectPath& rightPath, const String& host,
                                                Boolean includeQualifiers,
                                                Boolean includeClassOrigin,
                                                const CIMPropertyList& propertyList) const
{
    CIMClass classDef =
        ORV_Common::getStoredCIMClass(cimom, OperationContext(), ORV_Common::NAMESPACE, _assocClass,
                                      false, includeQualifiers, includeClassOrigin, propertyList);
    return ORV_Common::buildAssocInstance(_assocClass, _left.role, _right.role, leftPath, rightPath,
                                          classDef, host, ORV_Common::NAMESPACE.getString());
}

// ---- frame -----------------------------------------------------------------

ORV_AssociationFrame::ORV_AssociationFrame(const String& providerName,
                                           const ORV_AssociationShape& shape,
                                           const ORV_AssociationHooks& hooks,
                                           const char* sourceFile, Uint32 sourceLine)
    : _providerName(providerName), _sourceFile(sourceFile), _sourceLine(sourceLine),
      _shape(shape), _hooks(hooks)
{
}

void ORV_AssociationFrame::_authorize(const OperationContext& context) const
{
    ORV_Common::authorizeUser(context, _sourceFile, _sourceLine);
}

void ORV_AssociationFrame::initialize(const String& providerName, const String& openFailureName,
                                      CIMOMHandle& cimom, String& hostAddr, String& systemName,
                                      const std::function<void()>& setMembers,
                                      const std::function<void()>& afterIdentity)
{
    Text name(providerName);
    // The stray ")" after the line break belongs to the trace text.
    log_message(4, "--> %s::initialize(cimom)\n)", (const char*)name);
    setMembers();
    hostAddr = ORV_Common::getSystemHostName(cimom);
    systemName = ORV_Common::getSystemName(cimom);
    if (afterIdentity)
    {
        afterIdentity();
    }
    if (api_orvOpenForCimserver(NULL) != 0)
    {
        log_message(2, "%s::initialize(): api_orvOpenForCimserver failed\n",
                    (const char*)Text(openFailureName));
    }
    log_message(4, "<-- %s::initialize(cimom)\n)", (const char*)name);
}

ORV_AssociationSide ORV_AssociationFrame::_sideOf(const CIMObjectPath& objectName) const
{
    if (_hooks.sideOf)
    {
        return _hooks.sideOf(objectName);
    }
    return _shape.sideOf(objectName.getClassName());
}

void ORV_AssociationFrame::associators(const OperationContext& context,
                                       const CIMObjectPath& objectName,
                                       const CIMName& associationClass, const CIMName& resultClass,
                                       const String& role, const String& resultRole,
                                       Boolean includeQualifiers, Boolean includeClassOrigin,
                                       const CIMPropertyList& propertyList,
                                       ObjectResponseHandler& handler) const
{
    Text name(_providerName);
    log_message(4, "-->%s::associators\n", (const char*)name);
    log_message(4, "%s::associators: objectName = %s; associationClass=%s; resultClass=%s \n",
                (const char*)name, (const char*)Text(objectName),
                (const char*)Text(associationClass), (const char*)Text(resultClass));
    _authorize(context);

    // The association-class filter is the server's business: it routed the
    // request here.
    if (_hooks.invalidParms(objectName, role, resultRole, resultClass, "associators"))
    {
        log_message(2, "%s::associators: invalid params: resultClass = %s \n", (const char*)name,
                    (const char*)Text(resultClass));
        return;
    }
    Array<CIMInstance> related = _hooks.relatedInstances(objectName, context, includeQualifiers,
                                                         includeClassOrigin, propertyList);
    handler.processing();
    for (Uint32 i = 0; i < related.size(); i++)
    {
        handler.deliver(CIMObject(related[i]));
    }
    handler.complete();
    log_message(4, "<--%s::associators\n", (const char*)name);
}

void ORV_AssociationFrame::associatorNames(const OperationContext& context,
                                           const CIMObjectPath& objectName,
                                           const CIMName& associationClass,
                                           const CIMName& resultClass, const String& role,
                                           const String& resultRole,
                                           ObjectPathResponseHandler& handler) const
{
    Text name(_providerName);
    log_message(4, "-->%s::associatorNames\n", (const char*)name);
    log_message(4, "%s::associatorNames: objectName = %s; associationClass = %s; resultClass=%s \n",
                (const char*)name, (const char*)Text(objectName),
                (const char*)Text(associationClass), (const char*)Text(resultClass));
    _authorize(context);

    if (_hooks.invalidParms(objectName, role, resultRole, resultClass, "associatorNames"))
    {
        log_message(2, "%s::associatorNames: invalid params: associationClass=%s, resultClass=%s\n",
                    (const char*)name, (const char*)Text(associationClass),
                    (const char*)Text(resultClass));
        return;
    }
    Array<CIMObjectPath> related = _hooks.relatedInstanceNames(objectName, context);
    handler.processing();
    handler.deliver(related);
    handler.complete();
    log_message(4, "<--%s::associatorNames\n", (const char*)name);
}

void ORV_AssociationFrame::references(const OperationContext& context,
                                      const CIMObjectPath& objectName, const CIMName& resultClass,
                                      const String& role, Boolean includeQualifiers,
                                      Boolean includeClassOrigin,
                                      const CIMPropertyList& propertyList,
                                      ObjectResponseHandler& handler) const
{
    Text name(_providerName);
    log_message(4, "-->%s::references\n", (const char*)name);
    log_message(4, "%s::references: objectName = %s; resultClass = %s \n", (const char*)name,
                (const char*)Text(objectName), (const char*)Text(resultClass));
    _authorize(context);

    if (_hooks.invalidParms(objectName, role, String(), resultClass, "references"))
    {
        log_message(2, "%s::references: invalid params: role = %s, resultClass = %s \n",
                    (const char*)name, (const char*)Text(role), (const char*)Text(resultClass));
        return;
    }
    Array<CIMObjectPath> related = _hooks.relatedInstanceNames(objectName, context);
    const ORV_AssociationSide side = _sideOf(objectName);
    Array<CIMInstance> associations;
    for (Uint32 i = 0; i < related.size(); i++)
    {
        // The left end always goes first, whichever end the client named.
        if (side == ORV_ASSOC_RIGHT)
        {
            associations.append(_hooks.buildAssociationInstance(
                related[i], objectName, includeQualifiers, includeClassOrigin, propertyList));
        }
        else if (side == ORV_ASSOC_LEFT)
        {
            associations.append(_hooks.buildAssociationInstance(
                objectName, related[i], includeQualifiers, includeClassOrigin, propertyList));
        }
    }
    handler.processing();
    for (Uint32 i = 0; i < associations.size(); i++)
    {
        handler.deliver(CIMObject(associations[i]));
    }
    handler.complete();
    log_message(4, "<--%s::references\n", (const char*)name);
}

void ORV_AssociationFrame::referenceNames(const OperationContext& context,
                                          const CIMObjectPath& objectName,
                                          const CIMName& resultClass, const String& role,
                                          ObjectPathResponseHandler& handler) const
{
    Text name(_providerName);
    log_message(4, "-->%s::referenceNames\n", (const char*)name);
    // Names "references" and has no line break: the trace is kept as it reads.
    log_message(4, "%s::references: objectName = %s; resultClass = %s", (const char*)name,
                (const char*)Text(objectName), (const char*)Text(resultClass));
    _authorize(context);

    if (_hooks.invalidParms(objectName, role, String(), resultClass, "referenceNames"))
    {
        log_message(2, "%s::referenceNames: invalid params: role = %s, resultClass = %s \n",
                    (const char*)name, (const char*)Text(role), (const char*)Text(resultClass));
        return;
    }
    Array<CIMObjectPath> related = _hooks.relatedInstanceNames(objectName, context);
    const ORV_AssociationSide side = _sideOf(objectName);
    Array<CIMObjectPath> associations;
    for (Uint32 i = 0; i < related.size(); i++)
    {
        if (side == ORV_ASSOC_RIGHT)
        {
            associations.append(_hooks.buildAssociationName(related[i], objectName));
        }
        else if (side == ORV_ASSOC_LEFT)
        {
            associations.append(_hooks.buildAssociationName(objectName, related[i]));
        }
    }
    handler.processing();
    for (Uint32 i = 0; i < associations.size(); i++)
    {
        handler.deliver(associations[i]);
    }
    handler.complete();
    log_message(4, "<--%s::referenceNames\n", (const char*)name);
}

void ORV_AssociationFrame::getInstance(const OperationContext& context,
                                       const CIMObjectPath& instanceReference,
                                       Boolean includeQualifiers, Boolean includeClassOrigin,
                                       const CIMPropertyList& propertyList,
                                       InstanceResponseHandler& handler) const
{
    Text name(_providerName);
    log_message(4, "-->%s::getInstance() \n", (const char*)name);
    _authorize(context);

    // Only the count is judged here; names and values are left to the match.
    const Uint32 keyCount = instanceReference.getKeyBindings().size();
    if (keyCount != 2)
    {
        log_message(2, "%s::getInstance(): Invalid number of keys (%d)\n", (const char*)name,
                    (int)keyCount);
        throw CIMInvalidParameterException(_providerName + " Expect two keys.");
    }

    Array<CIMInstance> instances =
        _hooks.instances(includeQualifiers, includeClassOrigin, propertyList);
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        if (ORV_Common::matchObjectPath(instanceReference, instances[i].getPath()))
        {
            handler.processing();
            handler.deliver(instances[i]);
            handler.complete();
            log_message(4, "<-- %s::getInstance()\n", (const char*)name);
            return;
        }
    }
    throw CIMObjectNotFoundException(_providerName + " CIM Object not found.");
}

void ORV_AssociationFrame::enumerateInstances(const OperationContext& context,
                                              Boolean includeQualifiers, Boolean includeClassOrigin,
                                              const CIMPropertyList& propertyList,
                                              InstanceResponseHandler& handler) const
{
    Text name(_providerName);
    log_message(4, "--> %s::enumerateInstances() \n", (const char*)name);
    _authorize(context);

    Array<CIMInstance> instances =
        _hooks.instances(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        handler.deliver(instances[i]);
    }
    handler.complete();
    log_message(4, "<-- %s::enumerateInstances() \n", (const char*)name);
}

void ORV_AssociationFrame::enumerateInstanceNames(const OperationContext& context,
                                                  ObjectPathResponseHandler& handler) const
{
    Text name(_providerName);
    log_message(4, "--> %s::enumerateInstanceNames()\n", (const char*)name);
    _authorize(context);

    Array<CIMObjectPath> paths = _hooks.instanceNames();
    handler.processing();
    for (Uint32 i = 0; i < paths.size(); i++)
    {
        handler.deliver(paths[i]);
    }
    handler.complete();
    log_message(4, "<-- %s::enumerateInstanceNames()\n", (const char*)name);
}

Array<CIMObjectPath>
ORV_AssociationFrame::relatedInstanceNames(const CIMObjectPath& objectName,
                                           const OperationContext& context) const
{
    log_message(4, "-->%s::_getRelatedInstanceNames: className = %s \n",
                (const char*)Text(_providerName), (const char*)Text(objectName.getClassName()));
    return pathsOf(_hooks.relatedInstances(objectName, context, false, false, CIMPropertyList()));
}

Array<CIMObjectPath> ORV_AssociationFrame::instanceNames() const
{
    return pathsOf(_hooks.instances(false, false, CIMPropertyList()));
}

void ORV_AssociationFrame::collect(const String& providerName, const char* operation,
                                   Array<CIMInstance>& result, const std::function<void()>& fill)
{
    try
    {
        fill();
    }
    catch (...)
    {
        log_message(2,
                    "<--%s::%s: exception thrown while building instances, # of instances "
                    "assembled so far = %u\n",
                    (const char*)Text(providerName), operation, (unsigned)result.size());
        throw;
    }
    log_message(4, "<--%s::%s\n", (const char*)Text(providerName), operation);
}

void ORV_AssociationFrame::logRelatedEntry(const String& providerName,
                                           const CIMObjectPath& objectName)
{
    log_message(4, "-->%s::_getRelatedInstances: className = %s \n",
                (const char*)Text(providerName), (const char*)Text(objectName.getClassName()));
}

Array<CIMObjectPath> ORV_AssociationFrame::pathsOf(const Array<CIMInstance>& instances)
{
    Array<CIMObjectPath> paths;
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        paths.append(instances[i].getPath());
    }
    return paths;
}
