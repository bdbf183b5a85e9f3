-- The rows of branches' database files on a PostgreSQL server, for version 15 and later. "tenora
-- server init" runs this in an empty database, as the role that shall own it.
--
-- Every row table has
--   branch  the office whose file the row is of; every look-up begins with it
--   _row    where the row stands in the file (page * 256 + place): "order by _row" is the order in
--           which the engine gives rows that are otherwise equal
--   X_k     the engine's sort key of the text X: equal keys are texts that the engine takes for
--           equal, whatever the server's own collations are
--   extra   the columns of the file that the table does not have, by name, in the text form that a
--           column of theirs would have here
-- Currency is numeric(19,4), exact; dates are timestamps without a zone (1234 and 1899 among them);
-- yes/no is boolean. What columns a branch's file has, in which order and of which types, is in
-- kept_column.
begin;
create schema rental;

create table rental.version(number int not null);
insert into rental.version values (1);

create table rental.branch(
  id int generated always as identity primary key,
  name text not null unique check (name <> '' and length(name) <= 100),
  -- Who issues its buildings' receipt numbers: the file (false) or this server.
  counters_here boolean not null default false,
  -- The hand-over of them that was begun last; the file that they came from has it too.
  counters_mark text);

-- All hand-overs: a file that has an older one is a copy of then.
create table rental.hand_over(
  branch int not null references rental.branch on delete cascade,
  mark text not null,
  handed_back boolean not null default false,
  primary key (branch, mark));

-- Who imports a branch has its row locked. No login can lock it but through lock_import.
create table rental.import_lock(
  branch int primary key references rental.branch on delete cascade);

-- Which logins see which branches; the owner of the database fills it, no login can.
create table rental.may_see(
  login name not null,
  branch int not null references rental.branch on delete cascade,
  primary key (login, branch));

-- The state of the file that a branch's rows are of.
create table rental.sync(
  branch int primary key references rental.branch on delete cascade,
  generation bigint not null,            -- another one whenever a row has changed
  taken timestamptz not null,            -- when the file was read
  finished timestamptz not null default now(),
  file_name text not null,
  file_login name not null default '',   -- who named it: rental.name_file fills it in
  file_size bigint not null,
  file_time timestamptz not null,
  sort_order bigint not null,            -- of the file's texts
  rows bigint not null,
  findings bigint not null,
  tenora_version text not null);

-- The row tables, and the columns by which their rows are found: `key` is that of a table too large
-- to be read whole, `also` another one. A table without a key is read whole.
create table rental.table_kind(stored text primary key, key text, also text);
insert into rental.table_kind values
  ('owner', null, null), ('property', null, null), ('tenancy', null, null), ('glcodes', null, null),
  ('options', null, null), ('revenues', 'tenant_code', 'recordnumber'),
  ('rent_periods', 'tenant_code', null), ('rentchanges', 'tenantcode', null),
  ('insp_schedule', 'tenant_code', null), ('custom_fields', 'parentcode', null);

create table rental.kept_table(
  branch int not null references rental.branch on delete cascade,
  stored text not null references rental.table_kind,
  name text not null,                    -- as the file spells it
  rows bigint not null,
  primary key (branch, stored));
create table rental.kept_column(
  branch int not null,
  stored_table text not null,
  position int not null,                 -- in the file's table, from 0
  name text not null,                    -- as the file spells it
  type int not null,                     -- the file format's number
  length int not null, precision int not null, scale int not null, sort_order bigint not null,
  stored text,                           -- the column here; null: in extra
  primary key (branch, stored_table, position),
  foreign key (branch, stored_table) references rental.kept_table on delete cascade);

-- What a sync compares: the rows of a page with the same digest are not sent again.
create table rental.page(
  branch int not null references rental.branch on delete cascade,
  page bigint not null,
  stored_table text not null,
  rows int not null,
  digest bytea not null,
  primary key (branch, stored_table, page));

-- What is wrong with a branch's rows: told, never enforced.
create table rental.finding(
  branch int not null references rental.branch on delete cascade,
  stored_table text not null,
  _row bigint not null,
  what text not null);
create index finding_branch on rental.finding(branch);

create table rental.owner(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  code text, code_k bytea, name text, name_k bytea, postal1 text, postal2 text, postal3 text,
  street1 text, street2 text, street3 text, home text, work text, mobile text, fax text, email text,
  ird_number text, fee_percent real, account_name text, account_number text, closedstatus boolean,
  fee_value double precision, notes text, extra jsonb, primary key (branch, _row));
create table rental.property(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  code text, code_k bytea, address1 text, address2 text, address3 text, ownercode text,
  ownercode_k bytea, parent_property text, bedrooms smallint, details text, extra jsonb,
  primary key (branch, _row));
create table rental.tenancy(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  reference text, reference_k bytea, name text, name_k bytea, id_number text, monthly_day int,
  "property code" text, "property code_k" bytea, water_meter text, address1 text, address2 text,
  address3 text, "when started" timestamp(0), "when ended" timestamp(0),
  last_inspection timestamp(0), lastrentrise timestamp(0), email text, home_phone text,
  work_phone text, mobile text, fax text, bond numeric(19,4), closed_yn boolean,
  "current rent" numeric(19,4), every_amt int, every_freq text, rentreviewdate timestamp(0),
  comments text, extra jsonb, primary key (branch, _row));
create table rental.glcodes(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  gl_code text, gl_code_k bytea, description text, type int, exclude_cashflow boolean,
  pay_extra_charges boolean, taxable_yn boolean, balancedate timestamp(0),
  bankbalance numeric(19,4), money1 numeric(19,4), extra jsonb, primary key (branch, _row));
create table rental.options(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  whatpaysfirst int, rent_group text, smtpsend boolean, smtpaddress text, smtpport int,
  smtpssl boolean, smtpusername text, smtppassword text, smtpsender text, smtprecipient text,
  extra jsonb, primary key (branch, _row));
create table rental.revenues(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  recordnumber int, date timestamp(0), tender text, rent_weeks double precision,
  amount numeric(19,4), paid_to timestamp(0), "property code" text, tax numeric(19,4),
  "revenue group" text, tenant_code text, tenant_code_k bytea, comment text, extra jsonb,
  primary key (branch, _row));
create table rental.rent_periods(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  tenant_code text, tenant_code_k bytea, period_from timestamp(0), period_to timestamp(0),
  rent_due numeric(19,4), extra_charges numeric(19,4), paid numeric(19,4),
  extra_charges_paid numeric(19,4), extra jsonb, primary key (branch, _row));
create table rental.rentchanges(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  tenantcode text, tenantcode_k bytea, changedate timestamp(0), changevalue numeric(19,4),
  extra jsonb, primary key (branch, _row));
create table rental.insp_schedule(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  tenant_code text, tenant_code_k bytea, inspection_date timestamp(0), remark text, extra jsonb,
  primary key (branch, _row));
create table rental.custom_fields(
  branch int not null references rental.branch on delete cascade, _row bigint not null,
  parentcode text, parentcode_k bytea, parenttype int, fieldcode text, fieldcode_k bytea,
  value text, extra jsonb, primary key (branch, _row));

create index revenues_tenant_code on rental.revenues(branch, tenant_code_k);
create index revenues_recordnumber on rental.revenues(branch, recordnumber);
create index rent_periods_tenant_code on rental.rent_periods(branch, tenant_code_k);
create index rentchanges_tenantcode on rental.rentchanges(branch, tenantcode_k);
create index insp_schedule_tenant_code on rental.insp_schedule(branch, tenant_code_k);
create index custom_fields_parentcode on rental.custom_fields(branch, parentcode_k);

-- Whether a login may change who sees what: the owner of this database, and superusers.
create function rental.administers(a_login name)
returns boolean language sql stable set search_path = pg_catalog, pg_temp as $$
  select exists (select from pg_roles where rolname = a_login
    and has_table_privilege(oid, 'rental.may_see', 'insert'))
$$;

-- Receipt numbers of the branches that have them issued here. The row's lock is the guarantee that
-- no two letters get one number.
create table rental.counter(
  branch int not null references rental.branch on delete cascade,
  building_k bytea not null, building text not null,
  last bigint not null check (last between 0 and 9007199254740991),
  primary key (branch, building_k));
-- The next number of a building; null where the branch's file issues them. Who hands the numbers
-- back to the file waits for the share of the branch's row, so that none is issued behind its back.
create function rental.next_number(a_branch int, a_building text, a_building_k bytea)
returns bigint language sql security definer set search_path = pg_catalog, pg_temp as $$
  with issuing as (
    select id from rental.branch where id = a_branch and counters_here
      and (rental.administers(session_user)
        or id in (select branch from rental.may_see where login = session_user)) for share)
  insert into rental.counter as c select id, a_building_k, a_building, 1000 from issuing
  on conflict (branch, building_k)
    do update set last = case when c.last = 0 then 1000 else c.last + 1 end
  returning last
$$;

-- Other logins follow a path only where an administrator has named it: a sync reads whatever file
-- stands there. So a login cannot pass its path off as another one's.
create function rental.name_file()
returns trigger language plpgsql set search_path = pg_catalog, pg_temp as $$
begin
  if tg_op = 'UPDATE' and new.file_name = old.file_name and rental.administers(old.file_login) then
    new.file_login = old.file_login;
  else
    new.file_login = session_user;
  end if;
  return new;
end $$;
create trigger name_file before insert or update on rental.sync
  for each row execute function rental.name_file();

-- What follows runs as the owner of the database, whom row security lets do anything.
create function rental.require_sync_of(a_branch int)
returns void language plpgsql stable set search_path = pg_catalog, pg_temp as $$
begin
  if not rental.administers(session_user) and not exists
      (select from rental.may_see where branch = a_branch and login = session_user) then
    raise insufficient_privilege using message = 'this login may not bring the branch';
  end if;
end $$;

-- Until the end of the transaction nobody else imports the branch.
create function rental.lock_import(a_branch int)
returns void language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
begin
  perform rental.require_sync_of(a_branch);
  insert into rental.import_lock values (a_branch) on conflict do nothing;
  perform from rental.import_lock where branch = a_branch for update;
end $$;

-- Takes the rows of pages of a table out, or of all pages and what is known of its columns; returns
-- the number of rows. Who may delete rows of a table may also lock it whole, and so stop everybody:
-- a sync login may not.
create function rental.take_out(a_branch int, a_stored text, a_pages bigint[])
returns bigint language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
  removed bigint;
begin
  perform rental.require_sync_of(a_branch);
  if not exists (select from rental.table_kind where stored = a_stored) then
    raise undefined_table using message = 'there is no such table of a branch';
  end if;
  if a_pages is null then
    execute format('delete from rental.%I where branch = $1', a_stored) using a_branch;
    get diagnostics removed = row_count;
    delete from rental.page where branch = a_branch and stored_table = a_stored;
    delete from rental.kept_table where branch = a_branch and stored = a_stored;
  else
    execute format('delete from rental.%I r using unnest($2) p(page) where r.branch = $1 and '
      'r._row >= p.page * 256 and r._row < p.page * 256 + 256', a_stored) using a_branch, a_pages;
    get diagnostics removed = row_count;
    delete from rental.page
      where branch = a_branch and stored_table = a_stored and page = any(a_pages);
  end if;
  return removed;
end $$;

-- Writes down anew what of a branch's rows contradicts other rows.
create function rental.find_breaks(a_branch int)
returns void language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
  coded record;
  referring record;
begin
  perform rental.require_sync_of(a_branch);
  delete from rental.finding where branch = a_branch;
  for coded in select * from (values ('owner', 'code', 'code_k'), ('property', 'code', 'code_k'),
      ('tenancy', 'reference', 'reference_k')) as t(stored, code, key) loop
    execute format($sql$
      insert into rental.finding select branch, %1$L, _row, 'has no code'
        from rental.%1$I where branch = $1 and coalesce(%2$I, '') = ''$sql$,
      coded.stored, coded.code) using a_branch;
    execute format($sql$
      insert into rental.finding
        select branch, %1$L, _row, 'has the code ''' || %2$I || ''', as an earlier row has'
        from (select branch, _row, %2$I, row_number() over (partition by %3$I order by _row) place
          from rental.%1$I where branch = $1 and %3$I is not null) t where place > 1$sql$,
      coded.stored, coded.code, coded.key) using a_branch;
  end loop;
  for referring in select * from (values
      ('property', 'ownercode', 'owner', 'code_k'),
      ('tenancy', 'property code', 'property', 'code_k'),
      ('revenues', 'tenant_code', 'tenancy', 'reference_k'),
      ('rent_periods', 'tenant_code', 'tenancy', 'reference_k'),
      ('rentchanges', 'tenantcode', 'tenancy', 'reference_k'),
      ('insp_schedule', 'tenant_code', 'tenancy', 'reference_k')) as t(stored, code, target, key) loop
    execute format($sql$
      insert into rental.finding
        select f.branch, %1$L, f._row, 'names the %2$s ''' || f.%3$I || ''', which does not exist'
        from rental.%1$I f where f.branch = $1 and f.%3$I <> '' and not exists
          (select from rental.%2$I t where t.branch = f.branch and t.%4$I = f.%5$I)$sql$,
      referring.stored, referring.target, referring.code, referring.key, referring.code || '_k')
      using a_branch;
  end loop;
end $$;

-- Counts what the tables hold. Until then the server takes a new branch for an empty one, and reads
-- all of its rows for every look-up. Whoever counts locks the tables for others that would count,
-- until the end of the transaction; those do without, and the server counts by itself later.
create function rental.take_statistics()
returns void language plpgsql security definer set search_path = pg_catalog, pg_temp
set lock_timeout = '3s' as $$
begin
  analyze rental.owner, rental.property, rental.tenancy, rental.glcodes, rental.options,
    rental.revenues, rental.rent_periods, rental.rentchanges, rental.insp_schedule,
    rental.custom_fields, rental.page;
exception when lock_not_available then
  null;
end $$;

-- What a login may do. Logins are made by the administrator and given one of these roles.
do $$
declare
  role text;
begin
  foreach role in array array['tenora_reader', 'tenora_clerk', 'tenora_worker', 'tenora_sync'] loop
    if not exists (select from pg_roles where rolname = role) then
      execute format('create role %I nologin', role);
    end if;
    -- Roles are those of all databases of the server: another one may have been made before this.
    if role in ('tenora_clerk', 'tenora_worker') and not pg_has_role(role, 'tenora_reader', 'member')
    then
      execute format('grant tenora_reader to %I', role);
    end if;
  end loop;
end $$;
grant usage on schema rental to tenora_reader, tenora_sync;
grant select on all tables in schema rental to tenora_reader;
grant select, insert on all tables in schema rental to tenora_sync;
grant update (rows) on rental.kept_table to tenora_sync;
grant update (generation, taken, finished, file_name, file_size, file_time, sort_order, rows,
  findings, tenora_version) on rental.sync to tenora_sync;
-- The mail password is for workers only; among the extra columns of other versions of the package
-- there may be another one.
revoke select on rental.options from tenora_reader, tenora_sync;
grant select (branch, _row, whatpaysfirst, rent_group, smtpsend, smtpaddress, smtpport, smtpssl,
  smtpusername, smtpsender, smtprecipient) on rental.options to tenora_reader, tenora_sync;
grant select on rental.options to tenora_worker;
revoke insert on rental.may_see, rental.version, rental.table_kind, rental.branch, rental.counter,
  rental.hand_over, rental.import_lock from tenora_sync;
revoke execute on all functions in schema rental from public;
grant execute on function rental.next_number(int, text, bytea) to tenora_worker;
grant execute on function rental.administers(name) to tenora_reader, tenora_sync;
grant execute on function rental.lock_import(int), rental.take_out(int, text, bigint[]),
  rental.find_breaks(int), rental.take_statistics() to tenora_sync;

-- A login sees its branches only. The session's user counts, which no login can change, not the
-- role that it has set.
do $$
declare
  stored text;
begin
  foreach stored in array array['owner', 'property', 'tenancy', 'glcodes', 'options', 'revenues',
    'rent_periods', 'rentchanges', 'insp_schedule', 'custom_fields', 'sync', 'kept_table',
    'kept_column', 'page', 'finding', 'counter', 'hand_over', 'import_lock'] loop
    execute format('alter table rental.%I enable row level security', stored);
    execute format('create policy own_branches on rental.%I using (branch in '
      '(select s.branch from rental.may_see s where s.login = session_user))', stored);
  end loop;
  alter table rental.branch enable row level security;
  create policy own_branches on rental.branch using (id in
    (select s.branch from rental.may_see s where s.login = session_user));
  alter table rental.may_see enable row level security;
  create policy own_login on rental.may_see using (login = session_user);
end $$;
commit;
