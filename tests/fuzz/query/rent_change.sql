select top 1 changedate from rentchanges where tenantcode = 'T00001' and changedate>=#00:00:00 11/21/2026#order by changedate asc
