#pragma once

// The base of the definition records that a server stores. The caller owns what the two makers give.
class nxXMLDataObject
{
public:
    virtual ~nxXMLDataObject() = default;

    virtual nxXMLDataObject* CopyInstance() const = 0;
    virtual nxXMLDataObject* CreateInstance() const = 0;
    // Tells the kinds of records apart.
    virtual unsigned int GetDataCategoryTypeID() const = 0;

protected:
    nxXMLDataObject() = default;
    nxXMLDataObject(const nxXMLDataObject&) = default;
    nxXMLDataObject& operator=(const nxXMLDataObject&) = default;
};
