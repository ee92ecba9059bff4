# Filter for Doxygen: adds the same comments to all defaulted and deleted members.
/^ *[A-Za-z_]+\(const [A-Za-z_]+&( other)?\) = default;$/s/$/ \/\/\/< Copies each member; see the class for what copies share./
/^ *[A-Za-z_]+& operator=\(const [A-Za-z_]+&( other)?\) = default;$/s/$/ \/\/\/< Copies each member, as the constructor does./
/^ *[A-Za-z_]+\((const [A-Za-z_]+&)?\) = delete;$/s/$/ \/\/\/< Not available./
/^ *[A-Za-z_]+& operator=\(const [A-Za-z_]+&\) = delete;$/s/$/ \/\/\/< Not copied./
/^ *[A-Za-z_]+\(\) = default;$/s/$/ \/\/\/< Each member as its declaration says./
