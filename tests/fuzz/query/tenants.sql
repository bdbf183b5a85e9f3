select reference, [Property Code], tenancy.address1 as a1 from tenancy inner join property on tenancy.[property code] = property.code order by name, closed_yn desc
